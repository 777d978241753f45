#include "support/session/RequestHeaders.h"

#include <algorithm>
#include <string_view>

#include "support/session/ContentDecoder.h"

namespace rkt {
namespace {

bool isToken(std::string_view text) {
    constexpr std::string_view allowed =
        "!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return !text.empty() && text.find_first_not_of(allowed) == std::string_view::npos;
}

bool isFieldValue(std::string_view text) {
    return std::ranges::none_of(text, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < 0x20 && c != '\t') || byte == 0x7f;
    });
}

std::size_t headBytes(const RKTURLRequest& request) {
    constexpr std::size_t each = 32;
    const auto& url = request.URL();
    std::size_t bytes = url ? url->absoluteString().size() : 0;
    for (const auto& [name, value] : request.allHTTPHeaderFields())
        bytes += name.size() + value.size() + each;
    return bytes;
}

}  // namespace

bool canBeSent(const RKTURLRequest& request) {
    return headBytes(request) <= maximumRequestHeadBytes && isToken(request.HTTPMethod()) &&
           std::ranges::all_of(request.allHTTPHeaderFields(), [](const auto& field) {
               return isToken(field.first) && isFieldValue(field.second);
           });
}

std::vector<RKTURLRequest::Header> headersToSend(const RKTURLRequest& request) {
    auto headers = request.allHTTPHeaderFields();
    if (!request.valueForHTTPHeaderField("User-Agent"))
        headers.emplace_back("User-Agent", "KorvoGitService/1.0");
    if (!request.valueForHTTPHeaderField("Accept-Encoding"))
        headers.emplace_back("Accept-Encoding", acceptedEncodings);
    return headers;
}

}  // namespace rkt
