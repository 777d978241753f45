#pragma once

#include <string>
#include <string_view>

namespace emulator {

/// The SHA-256 of the text as 64 hexadecimal digits in lower case.
std::string sha256(std::string_view text);
/// Base64 (RFC 4648) with padding, on one line.
std::string base64(std::string_view bytes);
/// The bytes of a base64 text; empty when it is none.
std::string base64Decoded(std::string_view text);

}  // namespace emulator
