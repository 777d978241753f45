#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace emulator {

/// What a person allowed an application, kept under a code or a refresh token.
struct OAuthGrant {
    enum class Kind { Code, RefreshToken };

    Kind kind = Kind::Code;  ///< of the secret that it is kept under
    std::string clientId{};
    std::string login{};
    std::vector<std::string> scopes{};
    std::optional<std::string> redirectURL{};  ///< as the request for the code named it
};

/// Codes and refresh tokens: secrets that work once, and for a time.
class OAuthGrants {
public:
    /// Makes a secret of the form PREFIX and 40 hexadecimal digits, no two alike.
    std::string makeSecret(const std::string& prefix);

    void keep(const std::string& secret, OAuthGrant grant, std::int64_t expires);
    /// Nothing for a secret that was never kept, is of the other kind, was taken before or has
    /// expired at `now`.
    std::optional<OAuthGrant> take(OAuthGrant::Kind kind, const std::string& secret,
                                   std::int64_t now);

private:
    struct Kept {
        OAuthGrant grant;
        std::int64_t expires;
    };
    std::mutex mutex_;  // guards what follows
    std::uint64_t made_ = 0;
    std::map<std::string, Kept> kept_;
};

}  // namespace emulator
