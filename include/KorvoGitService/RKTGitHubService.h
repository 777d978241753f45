// GitHub and GitHub Enterprise.

#ifndef KORVOGITSERVICE_RKTGITHUBSERVICE_H
#define KORVOGITSERVICE_RKTGITHUBSERVICE_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTRESTService.h"

/// GitHub's REST API, version 3, at api.github.com or at an Enterprise server's "/api/v3". Every
/// kind of credential is sent as Basic authentication of user and token.
class RKT_EXPORT RKTGitHubService : public RKTRESTService {
public:
    /// The one object of the class side; it lives as long as the process.
    static const RKTServiceClass* serviceClass();

    /// Called by make() alone; applications use `serviceWithCredentials:`.
    explicit RKTGitHubService(Initializer initializer);

protected:
    std::optional<RKTURLComponents> componentsForPath(const RKTServiceCredentials& credentials,
                                                      std::string_view path) const override;
    std::optional<std::string> authorizationForCredentials(
        const RKTServiceCredentials& credentials) const override;
    Listing listingForRequest(std::shared_ptr<const RKTRepositoriesRequest> request) const override;
    std::string acceptHeader() const override;
};

/// The class side of RKTGitHubService.
class RKT_EXPORT RKTGitHubServiceClass : public RKTServiceClass {
public:
    std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const override;
    std::optional<std::string> localizedNameForServiceType(
        std::string_view serviceType) const override;
    std::optional<RKTURL> defaultURLForServiceType(std::string_view serviceType) const override;
    bool requiresCustomURLForServiceType(std::string_view serviceType) const override;
    std::vector<std::string> supportedCredentialTypesForServiceType(
        std::string_view serviceType) const override;
    std::optional<RKTURL> personalAccessTokenHelpURLForServiceType(
        std::string_view serviceType) const override;
    /// The endpoints are those of github.com, whatever the credentials' URL: only the public
    /// service offers OAuth2.
    RKTURL OAuth2AuthorizeEndpointForCredentials(
        const RKTServiceCredentials& credentials) const override;
    /// One item "login" with the credentials' user, when there is one: GitHub then suggests that
    /// account.
    std::optional<std::vector<RKTURLQueryItem>> OAuth2AuthorizeAdditionalParamtersForCredentials(
        const RKTServiceCredentials& credentials) const override;
    RKTURL OAuth2AccessTokenEndpointForCredentials(
        const RKTServiceCredentials& credentials) const override;

private:
    friend class RKTGitHubService;
    RKTGitHubServiceClass() = default;
};

#endif
