#include "support/URLText.h"

#include <uriparser/Uri.h>

#include <algorithm>
#include <cstddef>

#include "support/ASCII.h"
#include "support/Percent.h"

namespace rkt {

namespace {

constexpr CharacterTable URLCharactersButBrackets("-._~!$&'()*+,;=:@/?%#");
constexpr CharacterTable zoneCharacters("-._~%");

/// Cuts off `text` what follows the first `separator`, and the separator.
std::optional<std::string_view> cutAfter(std::string_view& text, char separator) {
    const std::size_t place = text.find(separator);
    if (place == std::string_view::npos) return std::nullopt;
    const std::string_view rest = text.substr(place + 1);
    text = text.substr(0, place);
    return rest;
}

/// An authority that uriparser took apart. It is given "//" and the authority only: the grammar of
/// the other parts is all in their characters, which were checked before, so there is nothing to
/// gain from a list node per path segment.
class ParsedAuthority {
public:
    explicit ParsedAuthority(const std::string& text) {
        const char* errorPlace = nullptr;
        parsed_ = uriParseSingleUriExA(&uri_, text.data(), text.data() + text.size(),
                                       &errorPlace) == URI_SUCCESS;
    }
    ParsedAuthority(const ParsedAuthority&) = delete;
    ParsedAuthority& operator=(const ParsedAuthority&) = delete;
    ~ParsedAuthority() {
        if (parsed_) uriFreeUriMembersA(&uri_);
    }

    explicit operator bool() const { return parsed_; }
    bool hostIsIPv6() const { return uri_.hostData.ip6 != nullptr; }
    bool hostIsIPLiteral() const { return hostIsIPv6() || uri_.hostData.ipFuture.first != nullptr; }
    std::string_view host() const { return range(uri_.hostText).value_or(""); }
    std::optional<std::string_view> userInformation() const { return range(uri_.userInfo); }
    std::optional<std::string_view> port() const { return range(uri_.portText); }

private:
    static std::optional<std::string_view> range(const UriTextRangeA& text) {
        if (text.first == nullptr) return std::nullopt;
        return std::string_view(text.first, text.afterLast);
    }

    UriUriA uri_{};
    bool parsed_ = false;
};

/// What stands between the address and the "]" in the authority's brackets, "%25" and a name
/// (RFC 6874 section 2), otherwise an empty part of it.
std::string_view zoneIn(std::string_view authority) {
    const std::size_t bracket = std::min(authority.find('['), authority.size());
    const auto literal = authority.substr(bracket, authority.find(']', bracket) - bracket);
    const auto zone = literal.substr(std::min(literal.find('%'), literal.size()));
    const bool isOne = zone.size() > 3 && zone.starts_with("%25") &&
                       zoneCharacters.containsAll(zone) && percentDecode(zone);
    return isOne ? zone : authority.substr(0, 0);
}

std::optional<std::string> withoutLeadingZeros(std::optional<std::string_view> port) {
    if (!port || port->empty()) return std::nullopt;
    return std::string(port->substr(std::min(port->find_first_not_of('0'), port->size() - 1)));
}

/// The host and port in a URL's text where they begin with a bracket, otherwise an empty part of
/// it.
std::string_view bracketedHostAndPort(std::string_view text) {
    auto hostAndPort = URLText(text).authority.value_or(text.substr(0, 0));
    if (const std::size_t at = hostAndPort.find('@'); at != std::string_view::npos) {
        hostAndPort.remove_prefix(at + 1);
    }
    return hostAndPort.starts_with('[') ? hostAndPort : text.substr(0, 0);
}

}  // namespace

URLText::URLText(std::string_view text) {
    fragment = cutAfter(text, '#');
    query = cutAfter(text, '?');
    if (const std::size_t colon = text.find(':');
        colon != std::string_view::npos && isScheme(text.substr(0, colon))) {
        scheme = text.substr(0, colon);
        text.remove_prefix(colon + 1);
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        authority = text.substr(0, text.find('/'));
        text.remove_prefix(authority->size());
    }
    path = text;
}

bool isScheme(std::string_view text) {
    static constexpr CharacterTable schemeCharacters("+-.");
    return !text.empty() && isASCIILetter(text.front()) && schemeCharacters.containsAll(text);
}

std::optional<Authority> Authority::parse(std::string_view text) {
    Authority authority;
    if (unreservedCharacters.containsAll(text)) {
        authority.host = text;  // and nothing else, as in nearly every request
        return authority;
    }
    const std::string_view zone = zoneIn(text);  // which uriparser does not know
    const auto zonePlace = static_cast<std::size_t>(zone.data() - text.data());
    const std::string reference = std::string("//")
                                      .append(text.substr(0, zonePlace))
                                      .append(text.substr(zonePlace + zone.size()));
    const ParsedAuthority parsed(reference);
    if (!parsed || (!zone.empty() && !parsed.hostIsIPv6())) return std::nullopt;

    if (auto user = parsed.userInformation()) {
        const auto password = cutAfter(*user, ':');
        if (password && password->find(':') != std::string_view::npos) return std::nullopt;
        authority.user = *user;
        authority.password = password;
    }
    authority.host = parsed.host();
    if (parsed.hostIsIPLiteral()) {
        authority.host.insert(0, "[").append(zone).append("]");
    }
    authority.port = withoutLeadingZeros(parsed.port());
    return authority;
}

std::optional<std::string> IPLiteral(std::string_view plainText) {
    auto address = plainText;
    if (address.starts_with('[') && address.ends_with(']')) {
        address = address.substr(1, address.size() - 2);
    } else if (address.find(':') == std::string_view::npos) {
        return std::nullopt;  // "v1.example.com" would be a future address
    }
    const std::size_t zone = std::min(address.find('%'), address.size());
    std::string literal("[");
    literal.append(address.substr(0, zone));
    appendPercentEncoded(literal, address.substr(zone), unreservedCharacters);
    literal += ']';
    const auto authority = Authority::parse(literal);
    return authority && authority->host == literal ? std::optional(literal) : std::nullopt;
}

std::string strayBracketsEncoded(std::string_view text) {
    const std::string_view kept = bracketedHostAndPort(text);
    const auto keptPlace = static_cast<std::size_t>(kept.data() - text.data());
    return percentEncode(text.substr(0, keptPlace), URLCharactersButBrackets)
        .append(kept)
        .append(percentEncode(text.substr(keptPlace + kept.size()), URLCharactersButBrackets));
}

}  // namespace rkt
