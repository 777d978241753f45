// Bitbucket Server, self-hosted.

#ifndef KORVOGITSERVICE_RKTBITBUCKETSERVERSERVICE_H
#define KORVOGITSERVICE_RKTBITBUCKETSERVERSERVICE_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTRESTService.h"

/// Bitbucket Server's REST API, version 1.0, at the credentials' URL. That URL's own path is
/// replaced, so an installation below a sub-path cannot be reached.
///
/// A listing's pages are not those of other services: see docs/services.md before asking for a page
/// beyond the first. It has no total, no sorting and no state filter.
class RKT_EXPORT RKTBitbucketServerService : public RKTRESTService {
public:
    /// The one object of the class side; it lives as long as the process.
    static const RKTServiceClass* serviceClass();

    /// Called by make() alone; applications use `serviceWithCredentials:`.
    explicit RKTBitbucketServerService(Initializer initializer);

protected:
    /// Nothing without a URL in the credentials: the request fails with NSURLErrorUnsupportedURL.
    std::optional<RKTURLComponents> componentsForPath(const RKTServiceCredentials& credentials,
                                                      std::string_view path) const override;
    /// A bearer token for OAuth2; user and token as Basic authentication for Basic and Token, a
    /// personal access token being accepted in the password's place; nothing for other types.
    std::optional<std::string> authorizationForCredentials(
        const RKTServiceCredentials& credentials) const override;
    /// The user's own record. The user's name is not escaped beyond what a path cannot hold.
    std::string validationPathForCredentials(
        const RKTServiceCredentials& credentials) const override;
    Listing listingForRequest(std::shared_ptr<const RKTRepositoriesRequest> request) const override;
};

/// The class side of RKTBitbucketServerService. No OAuth2 sign-in: its hooks throw as the base's
/// do.
class RKT_EXPORT RKTBitbucketServerServiceClass : public RKTServiceClass {
public:
    std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const override;
    std::optional<std::string> localizedNameForServiceType(
        std::string_view serviceType) const override;
    /// True, whatever the type.
    bool requiresCustomURLForServiceType(std::string_view serviceType) const override;
    std::vector<std::string> supportedCredentialTypesForServiceType(
        std::string_view serviceType) const override;

private:
    friend class RKTBitbucketServerService;
    RKTBitbucketServerServiceClass() = default;
};

#endif
