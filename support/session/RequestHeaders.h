// The header fields of a request.

#pragma once

#include <cstddef>
#include <vector>

#include "KorvoGitService/RKTURLRequest.h"

namespace rkt {

/// Of address, names and values together, with 32 bytes for each field (as RFC 7541 section 4.1
/// counts). nghttp2 sends no more than 64 KiB, and libcurl 7.88.1 neither fails nor goes on when it
/// should: the answer never comes, and the connection is lost to others. So there is room for the
/// cookies, which libcurl adds up to 8 KiB of, and for what a session adds. Servers take less.
constexpr std::size_t maximumRequestHeadBytes = 48'000;

/// Whether address, method and header fields can stand in a request: they are not too long, names
/// are tokens (RFC 9110 section 5.6.2) and values hold no control characters but tabs
/// (section 5.5). A CR, LF or NUL could smuggle a second request onto the wire, and what servers
/// make of the others differs.
bool canBeSent(const RKTURLRequest& request);

/// The request's own fields and those that are sent by themselves: "User-Agent", without which
/// GitHub refuses a request, and "Accept-Encoding".
std::vector<RKTURLRequest::Header> headersToSend(const RKTURLRequest& request);

}  // namespace rkt
