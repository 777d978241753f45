#include "KorvoGitService/RKTBitbucketService.h"

#include <utility>

#include "KorvoGitService/KorvoGitServiceBase.h"
#include "KorvoGitService/RKTRepositoryMapping.h"
#include "adapters/BitbucketCloneLinks.h"
#include "adapters/PublicHost.h"

// https://developer.atlassian.com/cloud/bitbucket/rest/api-group-repositories/
// https://developer.atlassian.com/cloud/bitbucket/rest/intro/#filtering

namespace {

constexpr const char* webHost = "bitbucket.org";
constexpr const char* APIHost = "api.bitbucket.org";

std::optional<std::string> privateWhenTrue(std::optional<RKTNumber> isPrivate) {
    const bool hidden = isPrivate && isPrivate->boolValue();
    return hidden ? RKTServiceRepositoryVisibilityPrivate : RKTServiceRepositoryVisibilityPublic;
}

constexpr rkt::CloneLinkName cloneNames[] = {
    {"https", &RKTServiceRepository::setHTTPSRepositoryURL},
    {"ssh", &RKTServiceRepository::setSSHRepositoryURL},
};

const RKTRepositoryMapping& repositoryMapping() {
    using namespace RKTRepositoryFields;
    using Repository = RKTServiceRepository;
    static const auto& mapping = *new RKTRepositoryMapping({
        {"uuid", string<&Repository::setIdentifier>},
        {"name", string<&Repository::setName>},
        {"full_name", string<&Repository::setFullName>},
        {"description", string<&Repository::setDescriptiveText>},
        {"owner", "account_id", string<&Repository::setOwnerIdentifier>},
        {"owner", "display_name", string<&Repository::setOwnerName>},
        {"is_private", number<&Repository::setVisibility, privateWhenTrue>},
        // A text is meant. A dictionary with an "href", which the service sends there, is not
        // looked into, so webURL is nothing in such answers; callers must do without it.
        {"links", "html", string<&Repository::setWebURL, plainURL>},
        {"links", "clone", rkt::cloneLinks<cloneNames>},
        {"mainbranch", "name", string<&Repository::setDefaultBranchName>},
    });
    return mapping;
}

/// "-" before the field makes it descend; there is no mark for ascending, the default.
std::optional<std::string> sortParameter(std::optional<std::string> field,
                                         RKTServiceSortDirection direction) {
    if (field && direction == RKTServiceSortDirectionDescending) field->insert(0, 1, '-');
    return field;
}

std::string filter(const RKTRepositoriesRequest& request) {
    std::string clauses = "scm = \"git\"";
    const auto visibility = request.visibility();
    if (visibility == RKTServiceRepositoryVisibilityPublic) clauses += " AND is_private = false";
    if (visibility == RKTServiceRepositoryVisibilityPrivate) clauses += " AND is_private = true";
    return clauses;
}

}  // namespace

const RKTServiceClass* RKTBitbucketService::serviceClass() {
    static const RKTServiceClass* const object = new RKTBitbucketServiceClass;
    return object;
}

RKTBitbucketService::RKTBitbucketService(Initializer initializer) : RKTRESTService(initializer) {}

std::optional<RKTURLComponents> RKTBitbucketService::componentsForPath(
    const RKTServiceCredentials&, std::string_view path) const {
    return rkt::componentsForHost(APIHost, RKTStringByAppendingPathComponent("/2.0", path));
}

std::optional<std::string> RKTBitbucketService::authorizationForCredentials(
    const RKTServiceCredentials& credentials) const {
    const auto type = credentials.credentialType();
    if (type == RKTServiceCredentialTypeOAuth2) return bearerAuthorization(credentials);
    if (type == RKTServiceCredentialTypeBasic) return basicAuthorization(credentials);
    // "Token" included, and meant: it is not among the supported types, and a secret of a kind that
    // the service was not asked to take must not leave the process by a guess. The request goes out
    // anonymous, and that validation of such credentials ends with 401 depends on it.
    return std::nullopt;
}

RKTRESTService::Listing RKTBitbucketService::listingForRequest(
    std::shared_ptr<const RKTRepositoriesRequest> request) const {
    static constexpr SortFields sortFields = {nullptr,      nullptr,      "name",
                                              "created_on", "updated_on", nullptr};
    Parameters parameters;
    append("role", "member", parameters);
    append("sort", sortParameter(sortField(*request, sortFields), request->sortDirection()),
           parameters);
    append("q", filter(*request), parameters);
    appendPaging(*request, "pagelen", parameters);
    return {"/repositories", std::move(parameters),
            readerPagedByLinks(readValues, repositoryMapping(), std::move(request))};
}

std::shared_ptr<RKTService> RKTBitbucketServiceClass::initWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) const {
    return RKTService::make<RKTBitbucketService>(credentials);
}

std::optional<std::string> RKTBitbucketServiceClass::localizedNameForServiceType(
    std::string_view serviceType) const {
    if (serviceType != RKTServiceTypeBitbucket) return std::nullopt;
    return RKTServiceLocalizedString("Bitbucket Cloud");
}

std::optional<RKTURL> RKTBitbucketServiceClass::defaultURLForServiceType(
    std::string_view serviceType) const {
    if (serviceType != RKTServiceTypeBitbucket) return std::nullopt;
    return rkt::URLForHost(webHost, "");
}

std::vector<std::string> RKTBitbucketServiceClass::supportedCredentialTypesForServiceType(
    std::string_view) const {
    return {RKTServiceCredentialTypeOAuth2, RKTServiceCredentialTypeBasic};
}

RKTURL RKTBitbucketServiceClass::OAuth2AuthorizeEndpointForCredentials(
    const RKTServiceCredentials&) const {
    return rkt::URLForHost(webHost, "/site/oauth2/authorize");
}

std::optional<std::vector<RKTURLQueryItem>>
RKTBitbucketServiceClass::OAuth2AuthorizeAdditionalParamtersForCredentials(
    const RKTServiceCredentials& credentials) const {
    return rkt::loginItems(credentials);
}

RKTURL RKTBitbucketServiceClass::OAuth2AccessTokenEndpointForCredentials(
    const RKTServiceCredentials&) const {
    return rkt::URLForHost(webHost, "/site/oauth2/access_token");
}
