// HTTP statuses as errors.

#ifndef KORVOGITSERVICE_CORE_HTTPERROR_H
#define KORVOGITSERVICE_CORE_HTTPERROR_H

#include <optional>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTJSON.h"

namespace rkt {

/// True outside 200…299.
bool isFailureStatus(int statusCode);

/// The library's error for a failure status: RKTServiceErrorUnauthorized for 401, otherwise the
/// status itself. Its description is the status's text with every word capitalized, its recovery
/// suggestion the text under "message" of the body, where the body is a dictionary that has one.
RKTError errorWithHTTPStatus(int statusCode, const std::optional<RKTJSONValue>& body);

}  // namespace rkt

#endif
