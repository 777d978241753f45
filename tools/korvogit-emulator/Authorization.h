#pragma once

#include <string>

#include "Accounts.h"
#include "Message.h"

namespace emulator {

/// What an Authorization header says.
struct Authorization {
    enum class Scheme { None, Basic, Bearer, Unknown };
    Scheme scheme = Scheme::None;
    std::string user;    ///< Basic only
    std::string secret;  ///< the password of Basic, the token of the others
};

/// Reads "Basic base64(user:password)", "Bearer token" and GitHub's "token token".
Authorization readAuthorization(const Request& request);

/// Whose authorization it is at a service that takes passwords: with Basic the account of that
/// login, if the secret is its password or one of its tokens, otherwise the account of the token. A
/// token that has expired at `now` is a wrong one.
const Account* accountWith(const Authorization& authorization, const Accounts& accounts,
                           std::int64_t now);

}  // namespace emulator
