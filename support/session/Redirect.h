// Where a redirect leads, and what goes along.

#pragma once

#include <optional>
#include <variant>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTURLRequest.h"

namespace rkt {

constexpr int maximumRedirects = 20;

/// True for the statuses that redirect: 301, 302, 303, 307, 308 (RFC 9110 section 15.4).
bool isRedirect(int status);

/// The request that follows `request` after a redirect to `location`; or the code of
/// NSURLErrorDomain when it must not be followed: NSURLErrorUnsupportedURL to anything but http and
/// https, NSURLErrorBadServerResponse from https to http, to an address that cannot be understood,
/// or with a body to another origin.
///
/// 301 and 302 turn POST into GET, 303 every method but HEAD, without the body. "Authorization" and
/// "Cookie" stay only for the same scheme, host and port; since the next hop starts from the
/// request returned here, they are gone for good. A body that 307 or 308 repeats may hold as much:
/// that of a token request has the client secret. Sending the request without it would ask for
/// something else, so it is not sent.
std::variant<RKTURLRequest, RKTError::URLCode> requestAfterRedirect(const RKTURLRequest& request,
                                                                    int status,
                                                                    std::string_view location);

}  // namespace rkt
