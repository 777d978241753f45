// Depot, a company's own hosting service.

#pragma once

#include <KorvoGitService/KorvoGitService.h>

/// Depot's API at the account's address: `GET /api/me` tells whether a token is good, and
/// `GET /api/repositories` lists
///
///     {"values": [{"key": "tools/anvil", "title": "Anvil", "about": "…", "restricted": true,
///                  "owner": {"handle": "tools"}, "clone": {"ssh": "git@…", "https":
///                  "https://…"}}]}
///
/// with the parameters "order", "page" and "count", and "Link" headers between the pages.
class DepotService : public RKTRESTService {
public:
    static constexpr const char* serviceType = "Depot";
    static const RKTServiceClass* serviceClass();

    explicit DepotService(Initializer initializer) : RKTRESTService(initializer) {}

protected:
    std::optional<RKTURLComponents> componentsForPath(const RKTServiceCredentials& credentials,
                                                      std::string_view path) const override;
    std::optional<std::string> authorizationForCredentials(
        const RKTServiceCredentials& credentials) const override;
    std::string validationPathForCredentials(const RKTServiceCredentials&) const override;
    Listing listingForRequest(std::shared_ptr<const RKTRepositoriesRequest> request) const override;
};
