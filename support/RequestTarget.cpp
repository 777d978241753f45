#include "support/RequestTarget.h"

#include <arpa/inet.h>
#include <unicode/bytestream.h>
#include <unicode/idna.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "support/ASCII.h"
#include "support/Percent.h"
#include "support/URLText.h"

namespace rkt {

namespace {

constexpr int largestPort = 65535;

std::optional<int> portNumber(std::string_view digits) {
    int port = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    return result.ec == std::errc() && port <= largestPort ? std::optional(port) : std::nullopt;
}

/// What is looked up for a name: of a label that is not ASCII, another (UTS #46, as browsers do
/// it). Nothing for a text that is no name.
std::optional<std::string> nameInASCII(const std::string& name) {
    constexpr std::uint32_t options =
        UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ;
    // There are such names, international or not.
    constexpr std::uint32_t allowed =
        UIDNA_ERROR_LEADING_HYPHEN | UIDNA_ERROR_TRAILING_HYPHEN | UIDNA_ERROR_HYPHEN_3_4;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::IDNA> idna(icu::IDNA::createUTS46Instance(options, status));
    if (U_FAILURE(status)) return std::nullopt;
    std::string ascii;
    icu::StringByteSink<std::string> sink(&ascii);
    icu::IDNAInfo info;
    idna->nameToASCII_UTF8(name, sink, info, status);
    const bool isName = U_SUCCESS(status) && (info.getErrors() & ~allowed) == 0 &&
                        unreservedCharacters.containsAll(ascii);
    return isName ? std::optional(ascii) : std::nullopt;
}

/// Percent-encoding belongs to the URL: libcurl decodes it in no zone, and in names by its own
/// rules and the process's locale. Nothing for what is no host.
std::optional<std::string> hostToAsk(const std::string& host) {
    if (host.find('%') == std::string::npos) return host;
    const auto plain = percentDecode(host);
    if (!plain) return std::nullopt;
    return host.starts_with('[') ? IPLiteral(*plain) : nameInASCII(*plain);
}

/// An IPv6 address has many spellings, one of which is the usual (RFC 5952). Its zone, the name of
/// an interface, stays as it is.
std::string usualSpelling(const std::string& host) {
    const std::size_t addressEnd = std::min(host.find_first_of("%]"), host.size());
    in6_addr address{};
    char text[INET6_ADDRSTRLEN];
    if (host.starts_with('[') &&
        inet_pton(AF_INET6, host.substr(1, addressEnd - 1).c_str(), &address) == 1 &&
        inet_ntop(AF_INET6, &address, text, sizeof text)) {
        return "[" + std::string(text) + host.substr(addressEnd);
    }
    return asciiLowered(host);
}

}  // namespace

std::string RequestTarget::URLForLoading() const {
    return scheme + "://" + host + (portGiven ? ":" + std::to_string(port) : "") + pathAndQuery;
}

std::variant<RequestTarget, TargetProblem> requestTarget(const std::optional<RKTURL>& url) {
    if (!url) return TargetProblem::UnsupportedURL;
    const URLText text(url->absoluteString());
    RequestTarget target;
    target.scheme = asciiLowered(text.scheme.value_or(""));
    if (target.scheme != "http" && target.scheme != "https") return TargetProblem::UnsupportedURL;

    const auto authority = text.authority ? Authority::parse(*text.authority) : std::nullopt;
    if (!authority || authority->host.empty()) return TargetProblem::BadURL;
    auto host = hostToAsk(authority->host);
    if (!host) return TargetProblem::BadURL;
    target.host = std::move(*host);
    target.portGiven = authority->port.has_value();
    const int schemePort = target.scheme == "https" ? 443 : 80;
    const auto port = target.portGiven ? portNumber(*authority->port) : schemePort;
    if (!port) return TargetProblem::BadURL;
    target.port = *port;

    target.pathAndQuery = text.path.empty() ? "/" : text.path;
    if (text.query) target.pathAndQuery.append("?").append(*text.query);
    return target;
}

bool sameOrigin(const RequestTarget& a, const RequestTarget& b) {
    return a.scheme == b.scheme && a.port == b.port &&
           usualSpelling(a.host) == usualSpelling(b.host);
}

std::string failingURLString(const RKTURL& url) {
    const URLText text(url.absoluteString());
    const auto holdsAt = [](std::string_view part) { return part.find('@') != part.npos; };
    if (holdsAt(text.path) || holdsAt(text.query.value_or("")) ||
        holdsAt(text.fragment.value_or(""))) {
        return "";
    }
    if (!text.path.empty() && !text.path.starts_with('/')) return "";

    std::string result;
    if (text.scheme) result.append(*text.scheme).append(":");
    if (text.authority) {
        const auto authority = Authority::parse(*text.authority);
        if (!authority) return "";
        const bool isName = !authority->host.starts_with('[');
        if (isName && authority->host.find('%') != std::string::npos) return "";
        result.append("//").append(authority->host);
        if (authority->port) result.append(":").append(*authority->port);
    }
    return result.append(text.path);
}

}  // namespace rkt
