// GitLab, hosted and self-hosted.

#ifndef KORVOGITSERVICE_RKTGITLABSERVICE_H
#define KORVOGITSERVICE_RKTGITLABSERVICE_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTRESTService.h"

/// GitLab's REST API, version 4, at the credentials' URL for gitlab.com and for own servers alike:
/// there is no other address to fall back on. Of that URL the scheme ("https" without one), the
/// host and the port are used; a server below a sub-path of its host cannot be reached. Every kind
/// of credential is sent as a bearer token.
class RKT_EXPORT RKTGitLabService : public RKTRESTService {
public:
    /// The one object of the class side; it lives as long as the process.
    static const RKTServiceClass* serviceClass();

    /// Called by make() alone; applications use `serviceWithCredentials:`.
    explicit RKTGitLabService(Initializer initializer);

protected:
    /// Without a URL in the credentials the request has no host and fails with NSURLErrorBadURL.
    std::optional<RKTURLComponents> componentsForPath(const RKTServiceCredentials& credentials,
                                                      std::string_view path) const override;
    std::optional<std::string> authorizationForCredentials(
        const RKTServiceCredentials& credentials) const override;
    Listing listingForRequest(std::shared_ptr<const RKTRepositoriesRequest> request) const override;
    /// The status first: GitLab's limits and its proxies answer in plain text and HTML.
    ResponseOrder responseOrder() const override;
};

/// The class side of RKTGitLabService. No OAuth2: its hooks throw as the base's do.
class RKT_EXPORT RKTGitLabServiceClass : public RKTServiceClass {
public:
    std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const override;
    std::optional<std::string> localizedNameForServiceType(
        std::string_view serviceType) const override;
    /// Must be put into the credentials of the hosted service too.
    std::optional<RKTURL> defaultURLForServiceType(std::string_view serviceType) const override;
    bool requiresCustomURLForServiceType(std::string_view serviceType) const override;
    std::vector<std::string> supportedCredentialTypesForServiceType(
        std::string_view serviceType) const override;
    std::optional<RKTURL> personalAccessTokenHelpURLForServiceType(
        std::string_view serviceType) const override;

private:
    friend class RKTGitLabService;
    RKTGitLabServiceClass() = default;
};

#endif
