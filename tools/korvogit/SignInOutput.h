// What came of a sign-in, as text and as JSON.

#pragma once

#include <KorvoGitService/RKTError.h>
#include <KorvoGitService/RKTServiceCredentials.h>

#include <optional>
#include <string>

#include "Json.h"

namespace korvogit {

/// "ok", "error" and "credentials", the record with all its secrets.
Json signInJSON(const std::optional<RKTError>& error, const RKTServiceCredentials& credentials);

/// The token, the refresh token and when the token ends, for a person: a line each.
std::string tokenSummary(const RKTServiceCredentials& credentials);

/// The account without any secret, for a person.
std::string accountSummary(const RKTServiceCredentials& credentials,
                           const std::string& serviceName);

}  // namespace korvogit
