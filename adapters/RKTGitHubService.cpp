#include "KorvoGitService/RKTGitHubService.h"

#include <utility>

#include "KorvoGitService/KorvoGitServiceBase.h"
#include "KorvoGitService/RKTRepositoryMapping.h"
#include "adapters/PublicHost.h"

// https://docs.github.com/en/rest/repos/repos
// https://docs.github.com/en/enterprise-server/rest

namespace {

constexpr const char* webHost = "github.com";
constexpr const char* APIHost = "api.github.com";
constexpr const char* enterpriseRoot = "/api/v3";

const RKTRepositoryMapping& repositoryMapping() {
    using namespace RKTRepositoryFields;
    using Repository = RKTServiceRepository;
    static const auto& mapping = *new RKTRepositoryMapping({
        {"id", number<&Repository::setIdentifier>},
        {"name", string<&Repository::setName>},
        {"full_name", string<&Repository::setFullName>},
        {"description", string<&Repository::setDescriptiveText>},
        {"owner", "id", number<&Repository::setOwnerIdentifier>},
        {"owner", "login", string<&Repository::setOwnerName>},
        {"archived", number<&Repository::setState, closedWhenTrue>},
        {"visibility", string<&Repository::setVisibility, knownVisibility>},
        {"fork", number<&Repository::setIsFork>},
        {"forks_count", number<&Repository::setNumberOfForks>},
        {"stargazers_count", number<&Repository::setNumberOfStars>},
        {"html_url", string<&Repository::setWebURL, plainURL>},
        {"ssh_url", string<&Repository::setSSHRepositoryURL, cloneURL>},
        {"clone_url", string<&Repository::setHTTPSRepositoryURL, plainURL>},
        {"default_branch", string<&Repository::setDefaultBranchName>},
    });
    return mapping;
}

}  // namespace

const RKTServiceClass* RKTGitHubService::serviceClass() {
    static const RKTServiceClass* const object = new RKTGitHubServiceClass;
    return object;
}

RKTGitHubService::RKTGitHubService(Initializer initializer) : RKTRESTService(initializer) {}

std::optional<RKTURLComponents> RKTGitHubService::componentsForPath(
    const RKTServiceCredentials& credentials, std::string_view path) const {
    const auto url = credentials.URL();
    if (credentials.serviceType() != RKTServiceTypeGitHubEnterprise || !url) {
        return rkt::componentsForHost(APIHost, path);
    }
    const std::string enterprisePath = RKTStringByAppendingPathComponent(enterpriseRoot, path);
    auto components = RKTURLComponents::componentsWithURL(*url);
    // The prefix stays at the public host, and that is meant: there is nothing below it, so such an
    // account ends with an error and not as one of public GitHub. Its token goes there all the same
    // (docs/security.md).
    if (!components) return rkt::componentsForHost(APIHost, enterprisePath);
    components->setPath(enterprisePath);
    return components;
}

std::optional<std::string> RKTGitHubService::authorizationForCredentials(
    const RKTServiceCredentials& credentials) const {
    return basicAuthorization(credentials);
}

std::string RKTGitHubService::acceptHeader() const {
    return "application/vnd.github.v3+json";
}

RKTRESTService::Listing RKTGitHubService::listingForRequest(
    std::shared_ptr<const RKTRepositoriesRequest> request) const {
    static constexpr SortFields sortFields = {nullptr,   nullptr,   "full_name",
                                              "created", "updated", "pushed"};
    Parameters parameters;
    append("sort", sortField(*request, sortFields), parameters);
    append("direction", sortDirection(*request), parameters);
    append("visibility", knownVisibility(*request), parameters);
    appendPaging(*request, "per_page", parameters);
    return {"/user/repos", std::move(parameters),
            readerPagedByLinks(readElements, repositoryMapping(), std::move(request))};
}

std::shared_ptr<RKTService> RKTGitHubServiceClass::initWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) const {
    return RKTService::make<RKTGitHubService>(credentials);
}

std::optional<std::string> RKTGitHubServiceClass::localizedNameForServiceType(
    std::string_view serviceType) const {
    if (serviceType == RKTServiceTypeGitHub) return RKTServiceLocalizedString("GitHub");
    if (serviceType == RKTServiceTypeGitHubEnterprise) {
        return RKTServiceLocalizedString("GitHub Enterprise");
    }
    return std::nullopt;
}

std::optional<RKTURL> RKTGitHubServiceClass::defaultURLForServiceType(
    std::string_view serviceType) const {
    if (serviceType != RKTServiceTypeGitHub) return std::nullopt;
    return rkt::URLForHost(webHost, "");
}

bool RKTGitHubServiceClass::requiresCustomURLForServiceType(std::string_view serviceType) const {
    return serviceType == RKTServiceTypeGitHubEnterprise;
}

std::vector<std::string> RKTGitHubServiceClass::supportedCredentialTypesForServiceType(
    std::string_view serviceType) const {
    if (serviceType != RKTServiceTypeGitHub) return {RKTServiceCredentialTypeToken};
    return {RKTServiceCredentialTypeOAuth2, RKTServiceCredentialTypeToken};
}

std::optional<RKTURL> RKTGitHubServiceClass::personalAccessTokenHelpURLForServiceType(
    std::string_view) const {
    return rkt::URLForHost("docs.github.com",
                           "/en/authentication/keeping-your-account-and-data-secure"
                           "/managing-your-personal-access-tokens");
}

RKTURL RKTGitHubServiceClass::OAuth2AuthorizeEndpointForCredentials(
    const RKTServiceCredentials&) const {
    return rkt::URLForHost(webHost, "/login/oauth/authorize");
}

std::optional<std::vector<RKTURLQueryItem>>
RKTGitHubServiceClass::OAuth2AuthorizeAdditionalParamtersForCredentials(
    const RKTServiceCredentials& credentials) const {
    return rkt::loginItems(credentials);
}

RKTURL RKTGitHubServiceClass::OAuth2AccessTokenEndpointForCredentials(
    const RKTServiceCredentials&) const {
    return rkt::URLForHost(webHost, "/login/oauth/access_token");
}
