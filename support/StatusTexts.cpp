#include "support/StatusTexts.h"

#include <algorithm>
#include <array>
#include <utility>

#include "support/LibraryBundle.h"

namespace rkt {
namespace {

using StatusText = std::pair<int, std::string_view>;

/// In the order of the numbers. 306 is registered as unused and has no text; so is 418 (RFC 9110
/// section 15.5.19), which is served under the text of RFC 2324 all the same.
constexpr std::array texts = {
    StatusText(100, "continue"),
    StatusText(101, "switching protocols"),
    StatusText(102, "processing"),
    StatusText(103, "early hints"),
    StatusText(200, "ok"),
    StatusText(201, "created"),
    StatusText(202, "accepted"),
    StatusText(203, "non-authoritative information"),
    StatusText(204, "no content"),
    StatusText(205, "reset content"),
    StatusText(206, "partial content"),
    StatusText(207, "multi-status"),
    StatusText(208, "already reported"),
    StatusText(226, "im used"),
    StatusText(300, "multiple choices"),
    StatusText(301, "moved permanently"),
    StatusText(302, "found"),
    StatusText(303, "see other"),
    StatusText(304, "not modified"),
    StatusText(305, "use proxy"),
    StatusText(307, "temporary redirect"),
    StatusText(308, "permanent redirect"),
    StatusText(400, "bad request"),
    StatusText(401, "unauthorized"),
    StatusText(402, "payment required"),
    StatusText(403, "forbidden"),
    StatusText(404, "not found"),
    StatusText(405, "method not allowed"),
    StatusText(406, "not acceptable"),
    StatusText(407, "proxy authentication required"),
    StatusText(408, "request timeout"),
    StatusText(409, "conflict"),
    StatusText(410, "gone"),
    StatusText(411, "length required"),
    StatusText(412, "precondition failed"),
    StatusText(413, "content too large"),
    StatusText(414, "uri too long"),
    StatusText(415, "unsupported media type"),
    StatusText(416, "range not satisfiable"),
    StatusText(417, "expectation failed"),
    StatusText(418, "i'm a teapot"),
    StatusText(421, "misdirected request"),
    StatusText(422, "unprocessable content"),
    StatusText(423, "locked"),
    StatusText(424, "failed dependency"),
    StatusText(425, "too early"),
    StatusText(426, "upgrade required"),
    StatusText(428, "precondition required"),
    StatusText(429, "too many requests"),
    StatusText(431, "request header fields too large"),
    StatusText(451, "unavailable for legal reasons"),
    StatusText(500, "internal server error"),
    StatusText(501, "not implemented"),
    StatusText(502, "bad gateway"),
    StatusText(503, "service unavailable"),
    StatusText(504, "gateway timeout"),
    StatusText(505, "http version not supported"),
    StatusText(506, "variant also negotiates"),
    StatusText(507, "insufficient storage"),
    StatusText(508, "loop detected"),
    StatusText(510, "not extended"),
    StatusText(511, "network authentication required"),
};
static_assert(std::ranges::is_sorted(texts));

std::string_view classText(int statusCode) {
    switch (statusCode / 100) {
        case 1:
            return localizable("informational");
        case 2:
            return localizable("success");
        case 3:
            return localizable("redirected");
        case 4:
            return localizable("client error");
        default:
            return localizable("server error");
    }
}

}  // namespace

std::string_view statusText(int statusCode) {
    const auto* const entry =
        std::ranges::lower_bound(texts, statusCode, std::ranges::less(), &StatusText::first);
    const bool found = entry != texts.end() && entry->first == statusCode;
    return found ? entry->second : classText(statusCode);
}

}  // namespace rkt
