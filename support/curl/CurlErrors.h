// What libcurl's failures mean.

#pragma once

#include <curl/curl.h>

#include <cstdint>
#include <string_view>

namespace rkt {

/// The code of NSURLErrorDomain for a transfer that ended with `code`.
/// @param handle  the transfer's, still with its information; null when there was none
std::int64_t transportErrorCode(CURLcode code, CURL* handle, std::string_view text);

}  // namespace rkt
