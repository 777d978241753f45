#include "KorvoGitService/KorvoGit.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "support/ASCII.h"
#include "support/Percent.h"
#include "support/URLText.h"

namespace {

constexpr rkt::CharacterTable hostNameCharacters("-._");
constexpr rkt::CharacterTable addressCharacters("-._~!$&'()*+,;=:%[]");

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

bool isHostName(std::string_view text) {
    return !text.empty() && hostNameCharacters.containsAll(text);
}

/// As it stands in a URL, when `text` is an address in brackets.
std::optional<std::string> bracketedAddress(std::string_view text) {
    const bool isBracketed = text.starts_with('[') && text.find(']') == text.size() - 1;
    return isBracketed && addressCharacters.containsAll(text) ? rkt::IPLiteral(text) : std::nullopt;
}

/// `user@host:path`, where nothing before the ":" is a "/". The path is no URL text: it is taken
/// literally, "%", "?" and blanks included. The user is required: `host:path` cannot be told from
/// a URL whose scheme is "host", such as `mailto:a` or `C:/repo`.
std::optional<RKTURL> URLFromSCPForm(std::string_view text) {
    const auto beforeColon = text.substr(0, text.find(':'));
    const std::size_t at = beforeColon.substr(0, beforeColon.find('/')).rfind('@');
    if (at == std::string_view::npos) return std::nullopt;
    const std::string_view user = text.substr(0, at);
    const std::string_view hostAndPath = text.substr(at + 1);
    const std::size_t bracket = hostAndPath.starts_with('[') ? hostAndPath.find(']') : 0;
    const std::size_t colon = hostAndPath.find(':', bracket);
    if (colon == std::string_view::npos) return std::nullopt;
    const std::string_view host = hostAndPath.substr(0, colon);
    const std::string_view path = hostAndPath.substr(colon + 1);
    const auto address = bracketedAddress(host);
    if (user.empty() || user.starts_with('[') || path.empty() || !(address || isHostName(host)))
        return std::nullopt;
    constexpr std::string_view scheme = "ssh://";
    std::string url;
    url.reserve(scheme.size() + text.size());  // unless something must be encoded
    url = scheme;
    std::size_t encoded = rkt::appendPercentEncoded(url, user, rkt::userOrHostCharacters);
    url.append("@").append(address ? *address : host);
    if (!path.starts_with('/')) url += '/';
    encoded += rkt::appendPercentEncoded(url, path, rkt::pathCharacters);
    // What stands as it is needs no look: it is ASCII and no control character.
    if (encoded != 0 && (std::ranges::any_of(path, isControl) || !rkt::isUTF8(text))) {
        return std::nullopt;
    }
    return RKTURLAccess::URLWithTextOfURL(std::move(url));
}

bool hasHostOrIsFile(const RKTURL& url) {
    const auto scheme = url.scheme();
    if (!scheme) return false;
    if (rkt::equalIgnoringCase(*scheme, "file")) return !url.path().empty();
    return !url.host().value_or("").empty();
}

}  // namespace

std::optional<RKTURL> rkt_URLWithString(std::string_view text) {
    if (auto url = URLFromSCPForm(text)) return url;
    auto url = RKTURL::URLWithString(text);
    if (url && !hasHostOrIsFile(*url)) url.reset();
    return url;
}
