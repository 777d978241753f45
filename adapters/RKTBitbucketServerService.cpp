#include "KorvoGitService/RKTBitbucketServerService.h"

#include <utility>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/KorvoGitServiceBase.h"
#include "KorvoGitService/RKTRepositoryMapping.h"
#include "adapters/BitbucketCloneLinks.h"
#include "support/Text.h"

// https://developer.atlassian.com/server/bitbucket/rest/

namespace {

std::optional<std::string> publicWhenTrue(std::optional<RKTNumber> isPublic) {
    const bool open = isPublic && isPublic->boolValue();
    return open ? RKTServiceRepositoryVisibilityPublic : RKTServiceRepositoryVisibilityPrivate;
}

/// A server without TLS names its address "http"; either is where a clone by HTTP goes.
constexpr rkt::CloneLinkName cloneNames[] = {
    {"https", &RKTServiceRepository::setHTTPSRepositoryURL},
    {"http", &RKTServiceRepository::setHTTPSRepositoryURL},
    {"ssh", &RKTServiceRepository::setSSHRepositoryURL},
};

const RKTRepositoryMapping& repositoryMapping() {
    using namespace RKTRepositoryFields;
    using Repository = RKTServiceRepository;
    static const auto& mapping = *new RKTRepositoryMapping({
        {"id", number<&Repository::setIdentifier>},
        {"name", string<&Repository::setName>},
        {"full_name", string<&Repository::setFullName>},
        {"description", string<&Repository::setDescriptiveText>},
        {"public", number<&Repository::setVisibility, publicWhenTrue>},
        // There is no line for ("links", "self"), and that is meant. This adapter takes it for a
        // dictionary whose keys may have a "name" and an "href", and a key, being a text, has
        // neither; the array that the service sends counts as absent. So webURL is never set, and
        // callers must do without it.
        {"links", "clone", rkt::cloneLinks<cloneNames>},
    });
    return mapping;
}

/// An absent number counts as 0.
std::uint64_t unsignedValue(const std::optional<RKTNumber>& number) {
    return number ? number->unsignedIntegerValue() : 0;
}

}  // namespace

const RKTServiceClass* RKTBitbucketServerService::serviceClass() {
    static const RKTServiceClass* const object = new RKTBitbucketServerServiceClass;
    return object;
}

RKTBitbucketServerService::RKTBitbucketServerService(Initializer initializer)
    : RKTRESTService(initializer) {}

std::optional<RKTURLComponents> RKTBitbucketServerService::componentsForPath(
    const RKTServiceCredentials& credentials, std::string_view path) const {
    const auto url = credentials.URL();
    auto components = url ? RKTURLComponents::componentsWithURL(*url) : std::nullopt;
    if (components) components->setPath(RKTStringByAppendingPathComponent("/rest/api/1.0", path));
    return components;
}

std::optional<std::string> RKTBitbucketServerService::authorizationForCredentials(
    const RKTServiceCredentials& credentials) const {
    const auto type = credentials.credentialType();
    if (type == RKTServiceCredentialTypeOAuth2) return bearerAuthorization(credentials);
    // "Token" too, and meant: the server takes a personal access token in the password's place, so
    // one form serves both. Credentials of this type need the user's name because of it.
    if (type == RKTServiceCredentialTypeBasic || type == RKTServiceCredentialTypeToken) {
        return basicAuthorization(credentials);
    }
    return std::nullopt;
}

std::string RKTBitbucketServerService::validationPathForCredentials(
    const RKTServiceCredentials& credentials) const {
    if (credentials.serviceType() != RKTServiceTypeBitbucketServer) return "/user";
    return "/users/" + rkt::orNull(credentials.user());
}

RKTRESTService::Listing RKTBitbucketServerService::listingForRequest(
    std::shared_ptr<const RKTRepositoriesRequest> request) const {
    const std::uint64_t page = unsignedValue(request->page());
    const std::uint64_t limit = unsignedValue(request->countPerPage());
    Parameters parameters;
    append("permission", "REPO_READ", parameters);
    const auto visibility = knownVisibility(*request);
    if (visibility != RKTServiceRepositoryVisibilityInternal) {
        append("visibility", visibility, parameters);
    }
    if (page != 0 && limit != 0) {
        // A quotient is meant, though the server counts "start" in repositories: pages 1 to `limit`
        // are all the first one. Callers page by this rule (docs/services.md), and the page of the
        // result below is reckoned by it from the start that the server answers.
        append("start", std::to_string((page - 1) / limit), parameters);
        append("limit", std::to_string(limit), parameters);
    }
    return {"/repos", std::move(parameters),
            [limit](const RKTJSONValue& body, RKTServiceArrayResult& result) {
                if (!readValues(body, repositoryMapping(), result) || limit == 0) return;
                const auto start = kc_objectOfClass<RKTNumber>(body, "start");
                result.setPage(RKTNumber(unsignedValue(start) / limit + 1));
            }};
}

std::shared_ptr<RKTService> RKTBitbucketServerServiceClass::initWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) const {
    return RKTService::make<RKTBitbucketServerService>(credentials);
}

std::optional<std::string> RKTBitbucketServerServiceClass::localizedNameForServiceType(
    std::string_view serviceType) const {
    if (serviceType != RKTServiceTypeBitbucketServer) return std::nullopt;
    return RKTServiceLocalizedString("Bitbucket Server");
}

bool RKTBitbucketServerServiceClass::requiresCustomURLForServiceType(std::string_view) const {
    return true;
}

std::vector<std::string> RKTBitbucketServerServiceClass::supportedCredentialTypesForServiceType(
    std::string_view) const {
    return {RKTServiceCredentialTypeBasic, RKTServiceCredentialTypeToken};
}
