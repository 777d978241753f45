// What a request needs to know of its URL, and what of it may be told.

#ifndef KORVOGITSERVICE_SUPPORT_REQUESTTARGET_H
#define KORVOGITSERVICE_SUPPORT_REQUESTTARGET_H

#include <optional>
#include <string>
#include <variant>

#include "KorvoGitService/RKTURL.h"

namespace rkt {

/// Where a request goes and what it asks for there. User information and fragment are not part of
/// it.
struct RequestTarget {
    /// "http" or "https", lower-cased.
    std::string scheme;
    /// Never empty. The URL's, but an international name in the form that is looked up,
    /// "xn--bcher-kva.example"; an IPv6 address with its brackets.
    std::string host;
    /// The URL's, or the scheme's own.
    int port = 0;
    bool portGiven = false;
    /// "/" for an empty path.
    std::string pathAndQuery;

    std::string URLForLoading() const;
};

enum class TargetProblem {
    /// No URL, no scheme, or one that is neither http nor https.
    UnsupportedURL,
    /// No host, a percent-encoded one that is no name, a port beyond 65535, or a text from which no
    /// components can be made.
    BadURL,
};

std::variant<RequestTarget, TargetProblem> requestTarget(const std::optional<RKTURL>& url);

/// Whether both have the same scheme, host and port (RFC 6454 section 5): names in any letter case,
/// IPv6 addresses in any spelling.
bool sameOrigin(const RequestTarget& a, const RequestTarget& b);

/// The URL for an error text: without user information, query and fragment. Empty where a secret
/// could stand in what remains, as in `https://user:se/cret@host/`: an "@" after the authority may
/// be the end of user information that somebody forgot to percent-encode, and a percent-encoded
/// name one that somebody encoded whole.
std::string failingURLString(const RKTURL& url);

}  // namespace rkt

#endif
