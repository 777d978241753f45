// Errors of the OAuth2 sign-in.

#ifndef KORVOGITSERVICE_SERVICE_OAUTH2ERROR_H
#define KORVOGITSERVICE_SERVICE_OAUTH2ERROR_H

#include <optional>

#include "KorvoGitService/RKTService.h"

namespace rkt {

/// What the provider's "error" says; nothing without one.
std::optional<RKTError> providerError(const RKTServiceClass::OAuth2ResponseObject& answer);

/// The redirect's state is not the one that was sent.
RKTError stateMismatch();

/// The answer to a token request cannot be read.
RKTError invalidTokenAnswer();

}  // namespace rkt

#endif
