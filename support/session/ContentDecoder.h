// Undoing "Content-Encoding" (RFC 9110 section 8.4).

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace rkt {

/// What requests say they accept.
extern const char* const acceptedEncodings;

enum class DecodingProblem {
    UnknownEncoding,
    Damaged,  // truncated, a wrong checksum, bytes that are not of the encoding
    TooLarge,
};

/// Replaces `body` by what it stands for. Never holds more than `maximumSize` decoded bytes at a
/// time, however small the encoded ones are.
/// @param contentEncoding  the header's value, a list in the order of application; an empty one
/// leaves the body alone
std::optional<DecodingProblem> decodeContent(std::string& body, std::string_view contentEncoding,
                                             std::size_t maximumSize);

}  // namespace rkt
