// Errors of NSURLErrorDomain, with texts for a person.

#pragma once

#include <cstdint>
#include <optional>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTURL.h"
#include "support/session/Loader.h"

namespace rkt {

/// @param url  what was being loaded; its user information and query stay out of the error
RKTError transportError(std::int64_t code, const std::optional<RKTURL>& url);

/// The same with what the HTTP library said.
RKTError transportError(const ExchangeResult::Failure& failure, const std::optional<RKTURL>& url);

}  // namespace rkt
