// The header fields of a request.

#pragma once

#include <cstddef>
#include <vector>

#include "KorvoGitService/RKTURLRequest.h"

namespace rkt {

/// The bytes of address, names and values together. nghttp2 sends no more than 64 KiB of header
/// fields with what it adds, and servers take less.
constexpr std::size_t maximumRequestHeadBytes = 60'000;

/// Whether address, method and header fields can stand in a request: they are not too long, names
/// are tokens (RFC 9110 section 5.6.2) and values hold no control characters but tabs
/// (section 5.5). A CR, LF or NUL could smuggle a second request onto the wire, and what servers
/// make of the others differs.
bool canBeSent(const RKTURLRequest& request);

/// The request's own fields and those that are sent by themselves: "User-Agent", without which
/// GitHub refuses a request, and "Accept-Encoding".
std::vector<RKTURLRequest::Header> headersToSend(const RKTURLRequest& request);

}  // namespace rkt
