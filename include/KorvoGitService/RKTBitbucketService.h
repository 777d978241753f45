// Bitbucket Cloud.

#ifndef KORVOGITSERVICE_RKTBITBUCKETSERVICE_H
#define KORVOGITSERVICE_RKTBITBUCKETSERVICE_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTRESTService.h"

/// Bitbucket Cloud's REST API, version 2.0, at api.bitbucket.org whatever the credentials' URL.
/// Lists the git repositories of which the user is a member.
class RKT_EXPORT RKTBitbucketService : public RKTRESTService {
public:
    /// The one object of the class side; it lives as long as the process.
    static const RKTServiceClass* serviceClass();

    /// Called by make() alone; applications use `serviceWithCredentials:`.
    explicit RKTBitbucketService(Initializer initializer);

protected:
    std::optional<RKTURLComponents> componentsForPath(const RKTServiceCredentials& credentials,
                                                      std::string_view path) const override;
    /// A bearer token for OAuth2, user and token for Basic, nothing for every other credential
    /// type: such a request is anonymous.
    std::optional<std::string> authorizationForCredentials(
        const RKTServiceCredentials& credentials) const override;
    Listing listingForRequest(std::shared_ptr<const RKTRepositoriesRequest> request) const override;
};

/// The class side of RKTBitbucketService.
class RKT_EXPORT RKTBitbucketServiceClass : public RKTServiceClass {
public:
    std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const override;
    std::optional<std::string> localizedNameForServiceType(
        std::string_view serviceType) const override;
    std::optional<RKTURL> defaultURLForServiceType(std::string_view serviceType) const override;
    std::vector<std::string> supportedCredentialTypesForServiceType(
        std::string_view serviceType) const override;
    /// The endpoints are those of bitbucket.org, whatever the credentials' URL.
    RKTURL OAuth2AuthorizeEndpointForCredentials(
        const RKTServiceCredentials& credentials) const override;
    /// One item "login" with the credentials' user, when there is one.
    std::optional<std::vector<RKTURLQueryItem>> OAuth2AuthorizeAdditionalParamtersForCredentials(
        const RKTServiceCredentials& credentials) const override;
    RKTURL OAuth2AccessTokenEndpointForCredentials(
        const RKTServiceCredentials& credentials) const override;

private:
    friend class RKTBitbucketService;
    RKTBitbucketServiceClass() = default;
};

#endif
