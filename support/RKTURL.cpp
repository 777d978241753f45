#include "KorvoGitService/RKTURL.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>
#include <utility>

#include "support/ASCII.h"
#include "support/Percent.h"
#include "support/URLText.h"

namespace {

constexpr rkt::CharacterTable plainCharacters("-._~!$&'()*+,;=:@/?");
/// With those that may stand in some places only.
constexpr rkt::CharacterTable validCharacters("-._~!$&'()*+,;=:@/?[]%#");

bool isURLText(std::string_view text) {
    bool hasFragment = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (!validCharacters.contains(c)) return false;
        if (c == '%') {
            if (!rkt::percentEncodedByte(text.substr(i))) return false;
            i += 2;
        } else if (c == '#') {
            if (hasFragment) return false;
            hasFragment = true;
        }
    }
    return true;
}

/// An authority's parts wherever they can be made out, also where the whole is impossible. The
/// first "@" ends the user information, the first ":" outside brackets the host.
struct LooseAuthority {
    explicit LooseAuthority(std::string_view text) {
        if (const auto at = text.find('@'); at != std::string_view::npos) {
            user = text.substr(0, at);
            if (const auto colon = user->find(':'); colon != std::string_view::npos) {
                password = user->substr(colon + 1);
                user = user->substr(0, colon);
            }
            text.remove_prefix(at + 1);
        }
        const auto bracket = text.starts_with('[') ? text.find(']') : std::string_view::npos;
        isLiteral = bracket != std::string_view::npos;
        const auto colon = text.find(':', isLiteral ? bracket : 0);
        host = isLiteral ? text.substr(1, bracket - 1) : text.substr(0, colon);
        if (colon != std::string_view::npos) port = text.substr(colon + 1);
    }

    std::optional<std::string_view> user;
    std::optional<std::string_view> password;
    std::string_view host;
    bool isLiteral = false;
    std::string_view port;
};

std::optional<LooseAuthority> authorityOf(std::string_view text) {
    const rkt::URLText parts(text);
    if (!parts.authority || parts.authority->empty()) return std::nullopt;
    return LooseAuthority(*parts.authority);
}

/// No parts but the scheme where no "/" follows it: what comes after `mailto:` has a structure that
/// only the scheme knows.
rkt::URLText hierarchicalPartsOf(std::string_view text) {
    rkt::URLText parts(text);
    if (parts.scheme && !parts.authority && !parts.path.starts_with('/')) {
        parts.path = {};
        parts.query.reset();
        parts.fragment.reset();
    }
    return parts;
}

std::optional<std::string> copied(const std::optional<std::string_view>& part) {
    return std::optional<std::string>(part);
}

}  // namespace

std::optional<RKTURL> RKTURL::URLWithString(std::string_view text) {
    std::string room;
    const auto view = RKTURLAccess::viewOfText(text, room);
    if (!view) return std::nullopt;
    return RKTURL(std::string(view->absoluteString()));
}

std::optional<RKTURLView> RKTURLAccess::viewOfText(std::string_view text, std::string& room) {
    if (plainCharacters.containsAll(text)) return RKTURLView(text);
    if (!isURLText(text)) return std::nullopt;
    if (text.find_first_of("[]") == std::string_view::npos) return RKTURLView(text);
    room = rkt::strayBracketsEncoded(text);
    return RKTURLView(room);
}

std::optional<std::string> RKTURL::scheme() const {
    return copied(rkt::URLText(text_).scheme);
}

std::optional<std::string> RKTURL::host() const {
    const auto authority = authorityOf(text_);
    if (!authority) return std::nullopt;
    // Of an address only the zone is encoded, from its "%" on. Anything else would become another
    // address: `[fe80::1%41]` is not fe80::1A.
    const auto encoded =
        authority->host.substr(std::min(authority->host.find('%'), authority->host.size()));
    if (authority->isLiteral && !encoded.starts_with("%25")) return std::string(authority->host);
    return rkt::percentDecode(authority->host);
}

std::optional<int> RKTURL::port() const {
    const auto authority = authorityOf(text_);
    if (!authority || authority->port.empty() ||
        !std::ranges::all_of(authority->port, rkt::isASCIIDigit)) {
        return std::nullopt;
    }
    const std::string_view digits = authority->port;
    int port = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    return result.ec == std::errc() ? port : std::numeric_limits<int>::max();
}

std::optional<std::string> RKTURL::user() const {
    const auto authority = authorityOf(text_);
    return authority && authority->user ? rkt::percentDecode(*authority->user) : std::nullopt;
}

std::optional<std::string> RKTURL::password() const {
    const auto authority = authorityOf(text_);
    return authority ? copied(authority->password) : std::nullopt;
}

std::string RKTURL::path() const {
    std::string path = rkt::percentDecode(hierarchicalPartsOf(text_).path).value_or("");
    if (path.size() > 1 && path.ends_with('/')) path.pop_back();
    return path;
}

std::optional<std::string> RKTURL::query() const {
    return copied(hierarchicalPartsOf(text_).query);
}

std::optional<std::string> RKTURL::fragment() const {
    return copied(hierarchicalPartsOf(text_).fragment);
}
