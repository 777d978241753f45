// Keeping an account's secrets out of errors.

#ifndef KORVOGITSERVICE_CORE_SECRETS_H
#define KORVOGITSERVICE_CORE_SECRETS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTServiceCredentials.h"

namespace rkt {

/// An account's token or password, refresh token, client secret and authorization code, as they
/// were when this was made. A service may repeat in an answer what it was sent, and texts of
/// answers become texts of errors, which end in logs and bug reports.
class Secrets {
public:
    explicit Secrets(const RKTServiceCredentials& credentials);

    /// One more.
    void add(std::optional<std::string> secret);

    /// The error with "***" wherever its user information repeats a secret, be it as it is,
    /// percent-encoded or in a Basic "Authorization"; the same error where it repeats none. A URL
    /// that is none any more without the secret is left out. A secret of fewer than eight
    /// characters is not looked for: what is so short stands in texts by chance, and would be told
    /// by what is missing. Where the account's address looks as if a secret stood in it in a way
    /// that no rule of URLs tells apart, what names the failing address is left out.
    RKTError removedFrom(const RKTError& error) const;

private:
    std::vector<std::string> forms() const;
    bool mayTell(std::string_view key) const;

    std::vector<std::string> secrets_;
    std::string user_;
    std::optional<std::string> token_;
    bool addressMayHoldOne_;
};

}  // namespace rkt

#endif
