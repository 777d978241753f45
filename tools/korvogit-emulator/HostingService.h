#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "Accounts.h"
#include "Message.h"
#include "OAuthApplication.h"

namespace emulator {

/// What all services have in common: whom they know and how strict they are.
struct ServiceSettings {
    const Accounts& accounts;
    const std::vector<OAuthApplication>& applications;
    std::int64_t rateLimit;
    std::function<std::int64_t()> clock;  ///< seconds since 1970
    bool strict = false;                  ///< see ServerOptions
    bool listsAcrossWorkspaces = true;    ///< see ServerOptions
};

/// Whether all requests of the account are refused as too many; `account` may be null.
inline bool isLimited(const Account* account) {
    const auto restriction = account != nullptr ? account->restriction : Restriction::None;
    return restriction == Restriction::RateLimited ||
           restriction == Restriction::RateLimitedAs429 ||
           restriction == Restriction::SecondaryLimited;
}

/// One hosting product's web API. Called from several threads at once.
class HostingService {
public:
    virtual ~HostingService() = default;
    /// Whether the request is this service's to answer, by its authority and path.
    virtual bool serves(const Request& request) const = 0;
    virtual Answer answer(const Request& request) = 0;
};

}  // namespace emulator
