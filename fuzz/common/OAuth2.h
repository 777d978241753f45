// The errors of OAuth2 answers a second time.

#pragma once

#include <optional>

#include "KorvoGitService/RKTError.h"
#include "fuzz/common/Plain.h"

namespace fuzz {

/// What the answer's "error" should become; nothing without one.
std::optional<RKTError> expectedOAuth2Error(const plain::Dictionary& answer);

/// The error when nobody may learn this secret from it: "***" stands for it in texts and addresses,
/// also where it is percent-encoded; an address that is none without it is gone.
RKTError withoutSecret(const RKTError& error, const std::string& secret);

}  // namespace fuzz
