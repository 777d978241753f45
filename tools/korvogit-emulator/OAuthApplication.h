#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// A program that was registered with the services for signing people in.
struct OAuthApplication {
    std::string clientId{};
    std::string clientSecret{};
    std::string name{};
    /// Where people may be sent back to; the first one where a request names none. At a loopback
    /// address the port does not count (RFC 8252, 7.3).
    std::vector<std::string> callbacks{"http://127.0.0.1/callback"};
    /// GitHub's opt-in: its tokens end after eight hours and come with a refresh token. Bitbucket's
    /// always do, after two.
    bool expiringTokens = false;

    bool allows(std::string_view redirectURL) const;

    /// "demo-client" and, with expiring tokens, "demo-client-expiring"; their secrets are
    /// "demo-secret" and "demo-secret-expiring".
    static std::vector<OAuthApplication> demo();
};

}  // namespace emulator
