#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace emulator {

/// A secret that lets into an account.
struct Token {
    std::string value{};
    std::vector<std::string> scopes{"repo", "read:org", "read:user"};
    std::optional<std::int64_t> expires{};  ///< seconds since 1970; past: the token is refused
};

/// Tokens that one server made while it runs, by sign-ins. Safe from any thread. A copy has
/// none, made or assigned: it is for another server.
class IssuedTokens {
public:
    IssuedTokens() = default;
    IssuedTokens(const IssuedTokens&) {}
    IssuedTokens& operator=(const IssuedTokens& other);

    void add(std::string login, Token token);
    /// The login of its owner, and the token, which stays where it is; null for an unknown one.
    std::pair<std::string_view, const Token*> find(std::string_view value) const;

private:
    mutable std::mutex mutex_;  // guards what follows
    std::map<std::string, std::pair<std::string, Token>, std::less<>> byValue_;
};

}  // namespace emulator
