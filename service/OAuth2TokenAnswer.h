// The answer to a token request (RFC 6749 section 5).

#ifndef KORVOGITSERVICE_SERVICE_OAUTH2TOKENANSWER_H
#define KORVOGITSERVICE_SERVICE_OAUTH2TOKENANSWER_H

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "KorvoGitService/RKTDate.h"
#include "KorvoGitService/RKTError.h"

namespace rkt {

struct OAuth2Tokens {
    std::optional<std::string> token;
    std::optional<std::string> refreshToken;
    RKTDate expiryDate = RKTDateDistantFuture();
};

/// @param contentType  the header's value, if there is one
/// @param now          from when the token's lifetime counts
std::variant<OAuth2Tokens, RKTError> readTokenAnswer(const std::optional<std::string>& contentType,
                                                     std::string_view body, RKTDate now);

}  // namespace rkt

#endif
