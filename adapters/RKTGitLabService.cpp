#include "KorvoGitService/RKTGitLabService.h"

#include <utility>

#include "KorvoGitService/KorvoGitServiceBase.h"
#include "KorvoGitService/RKTRepositoryMapping.h"
#include "adapters/PublicHost.h"

// https://docs.gitlab.com/api/projects/
// https://docs.gitlab.com/api/users/

namespace {

const RKTRepositoryMapping& repositoryMapping() {
    using namespace RKTRepositoryFields;
    using Repository = RKTServiceRepository;
    static const auto& mapping = *new RKTRepositoryMapping({
        {"id", number<&Repository::setIdentifier>},
        {"name", string<&Repository::setName>},
        {"name_with_namespace", string<&Repository::setFullName>},
        {"description", string<&Repository::setDescriptiveText>},
        {"path", string<&Repository::setPath>},
        {"path_with_namespace", string<&Repository::setFullPath>},
        {"namespace", "id", number<&Repository::setOwnerIdentifier>},
        {"namespace", "name", string<&Repository::setOwnerName>},
        {"archived", number<&Repository::setState, closedWhenTrue>},
        {"visibility", string<&Repository::setVisibility, knownVisibility>},
        {"forks_count", number<&Repository::setNumberOfForks>},
        {"star_count", number<&Repository::setNumberOfStars>},
        {"web_url", string<&Repository::setWebURL, plainURL>},
        {"ssh_url_to_repo", string<&Repository::setSSHRepositoryURL, cloneURL>},
        {"http_url_to_repo", string<&Repository::setHTTPSRepositoryURL, plainURL>},
        {"default_branch", string<&Repository::setDefaultBranchName>},
    });
    return mapping;
}

/// "archived" as the state asks for it.
std::optional<std::string> archivedFilter(const RKTRepositoriesRequest& request) {
    const auto state = request.state();
    if (state == RKTServiceRepositoryStateClosed) return "true";
    if (state == RKTServiceRepositoryStateOpen) return "false";
    return std::nullopt;
}

}  // namespace

const RKTServiceClass* RKTGitLabService::serviceClass() {
    static const RKTServiceClass* const object = new RKTGitLabServiceClass;
    return object;
}

RKTGitLabService::RKTGitLabService(Initializer initializer) : RKTRESTService(initializer) {}

std::optional<RKTURLComponents> RKTGitLabService::componentsForPath(
    const RKTServiceCredentials& credentials, std::string_view path) const {
    RKTURLComponents components;
    components.setScheme("https");
    if (const auto url = credentials.URL()) {
        if (auto scheme = url->scheme()) components.setScheme(std::move(scheme));
        components.setHost(url->host());
        components.setPort(url->port());
    }
    components.setPath(RKTStringByAppendingPathComponent("/api/v4", path));
    return components;
}

std::optional<std::string> RKTGitLabService::authorizationForCredentials(
    const RKTServiceCredentials& credentials) const {
    return bearerAuthorization(credentials);
}

RKTRESTService::ResponseOrder RKTGitLabService::responseOrder() const {
    return ResponseOrder::StatusThenParse;
}

RKTRESTService::Listing RKTGitLabService::listingForRequest(
    std::shared_ptr<const RKTRepositoriesRequest> request) const {
    // "last_activity_date" is meant, though GitLab's documentation has "last_activity_at": the
    // value is what the library promises for RKTServiceSortKeyLastActivity, and callers compare
    // requests with it. A server that takes documented values only answers 400, and the caller sees
    // that.
    static constexpr SortFields sortFields = {nullptr,      "id",         "name",
                                              "created_at", "updated_at", "last_activity_date"};
    Parameters parameters;
    append("order_by", sortField(*request, sortFields), parameters);
    append("sort", sortDirection(*request), parameters);
    append("archived", archivedFilter(*request), parameters);
    append("visibility", knownVisibility(*request), parameters);
    appendPaging(*request, "per_page", parameters);
    // Always, and meant: 10 is a guest's level, the lowest one. Without this filter, the only one
    // of its kind that is sent, GitLab lists every public project there is; that the pages and
    // their number are those of the user's own projects depends on it.
    append("min_access_level", "10", parameters);
    return {"/projects", std::move(parameters),
            readerPagedByLinks(readElements, repositoryMapping(), std::move(request))};
}

std::shared_ptr<RKTService> RKTGitLabServiceClass::initWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) const {
    return RKTService::make<RKTGitLabService>(credentials);
}

std::optional<std::string> RKTGitLabServiceClass::localizedNameForServiceType(
    std::string_view serviceType) const {
    if (serviceType == RKTServiceTypeGitLab) return RKTServiceLocalizedString("GitLab.com");
    if (serviceType == RKTServiceTypeGitLabSelfHosted) {
        return RKTServiceLocalizedString("GitLab self-hosted");
    }
    return std::nullopt;
}

std::optional<RKTURL> RKTGitLabServiceClass::defaultURLForServiceType(
    std::string_view serviceType) const {
    if (serviceType != RKTServiceTypeGitLab) return std::nullopt;
    return rkt::URLForHost("gitlab.com", "");
}

bool RKTGitLabServiceClass::requiresCustomURLForServiceType(std::string_view serviceType) const {
    return serviceType == RKTServiceTypeGitLabSelfHosted;
}

std::vector<std::string> RKTGitLabServiceClass::supportedCredentialTypesForServiceType(
    std::string_view) const {
    return {RKTServiceCredentialTypeToken};
}

std::optional<RKTURL> RKTGitLabServiceClass::personalAccessTokenHelpURLForServiceType(
    std::string_view) const {
    return rkt::URLForHost("docs.gitlab.com", "/user/profile/personal_access_tokens/");
}
