// The errors of OAuth2 answers a second time.

#pragma once

#include <optional>

#include "KorvoGitService/RKTError.h"
#include "fuzz/common/Plain.h"

namespace fuzz {

/// What the answer's "error" should become; nothing without one.
std::optional<RKTError> expectedOAuth2Error(const plain::Dictionary& answer);

}  // namespace fuzz
