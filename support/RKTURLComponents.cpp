#include "KorvoGitService/RKTURLComponents.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "support/ASCII.h"
#include "support/Percent.h"
#include "support/URLText.h"

namespace {

/// Of a path that is percent-encoded already. Not ";": some readers take it for the end of the
/// path, as RFC 2396 still let them.
constexpr rkt::CharacterTable pathTextCharacters("-._~!$&'()*+,=:@/%");

std::optional<std::string> decoded(const std::optional<std::string>& part) {
    return part ? rkt::percentDecode(*part) : std::nullopt;
}

RKTURLQueryItem itemFromText(std::string_view text) {
    const std::size_t equals = text.find('=');
    RKTURLQueryItem item;
    item.name = rkt::percentDecode(text.substr(0, equals)).value_or("");
    if (equals != std::string_view::npos) item.value = rkt::percentDecode(text.substr(equals + 1));
    return item;
}

void append(std::string& query, const RKTURLQueryItem& item) {
    query += rkt::percentEncode(item.name, rkt::queryItemCharacters);
    if (item.value) query += "=" + rkt::percentEncode(*item.value, rkt::queryItemCharacters);
}

/// `before`, `part` and `after`, when there is a part.
void append(std::string& text, std::string_view before, const std::optional<std::string>& part,
            std::string_view after = "") {
    if (part) text.append(before).append(*part).append(after);
}

}  // namespace

std::optional<RKTURLComponents> RKTURLComponents::componentsWithURL(const RKTURL& url) {
    const rkt::URLText text(url.absoluteString());
    RKTURLComponents components;
    if (text.authority) {
        auto authority = rkt::Authority::parse(*text.authority);
        if (!authority) return std::nullopt;
        components.user_ = std::move(authority->user);
        components.password_ = std::move(authority->password);
        components.host_ = std::move(authority->host);
        components.port_ = std::move(authority->port);
    }
    components.scheme_ = text.scheme;
    components.path_ = rkt::percentEncode(text.path, pathTextCharacters);
    components.query_ = text.query;
    components.fragment_ = text.fragment;
    return components;
}

std::optional<std::string> RKTURLComponents::user() const {
    return decoded(user_);
}

std::optional<std::string> RKTURLComponents::password() const {
    return decoded(password_);
}

std::optional<std::string> RKTURLComponents::host() const {
    return decoded(host_);
}

void RKTURLComponents::setHost(const std::optional<std::string>& host) {
    if (!host) {
        host_.reset();
    } else if (auto literal = rkt::IPLiteral(*host)) {
        host_ = std::move(literal);
    } else {
        host_ = rkt::percentEncode(*host, rkt::userOrHostCharacters);
    }
}

std::optional<std::int64_t> RKTURLComponents::port() const {
    if (!port_) return std::nullopt;
    std::int64_t port = 0;
    const auto result = std::from_chars(port_->data(), port_->data() + port_->size(), port);
    return result.ec == std::errc() ? std::optional(port) : std::nullopt;
}

void RKTURLComponents::setPort(std::optional<std::int64_t> port) {
    port_ = port ? std::optional(std::to_string(*port)) : std::nullopt;
}

std::string RKTURLComponents::path() const {
    return rkt::percentDecode(path_).value_or("");
}

void RKTURLComponents::setPath(std::string_view path) {
    const std::size_t segmentEnd = std::min(path.find('/'), path.size());
    path_ = rkt::percentEncode(path.substr(0, segmentEnd), rkt::firstSegmentCharacters) +
            rkt::percentEncode(path.substr(segmentEnd), rkt::pathCharacters);
}

std::optional<std::vector<RKTURLQueryItem>> RKTURLComponents::queryItems() const {
    if (!query_) return std::nullopt;
    std::vector<RKTURLQueryItem> items;
    if (query_->empty()) return items;
    std::string_view rest = *query_;
    for (;;) {
        const std::size_t separator = rest.find('&');
        items.push_back(itemFromText(rest.substr(0, separator)));
        if (separator == std::string_view::npos) return items;
        rest.remove_prefix(separator + 1);
    }
}

void RKTURLComponents::setQueryItems(const std::optional<std::vector<RKTURLQueryItem>>& items) {
    query_.reset();
    if (!items) return;
    query_.emplace();
    for (const RKTURLQueryItem& item : *items) {
        if (&item != &items->front()) *query_ += '&';
        append(*query_, item);
    }
}

std::optional<RKTURL> RKTURLComponents::URL() const {
    if (!canStandTogether()) return std::nullopt;
    std::string text;
    append(text, "", scheme_, ":");
    if (host_) {
        text += "//";
        append(text, "", user_);
        append(text, ":", password_);
        if (user_) text += '@';
        text += *host_;
        append(text, ":", port_);
    }
    text += path_;
    append(text, "?", query_);
    append(text, "#", fragment_);
    return RKTURL::URLWithString(text);
}

/// RFC 3986 sections 3 and 4.2: what would be read as another part than the one it is.
bool RKTURLComponents::canStandTogether() const {
    if (scheme_ && !rkt::isScheme(*scheme_)) return false;
    if (host_) {
        const bool portIsNumber = !port_ || std::ranges::all_of(*port_, rkt::isASCIIDigit);
        return portIsNumber && (path_.empty() || path_.starts_with('/'));
    }
    const bool pathHasScheme = !scheme_ && rkt::URLText(path_).scheme;
    return !user_ && !port_ && !path_.starts_with("//") && !pathHasScheme;
}

std::string RKTStringByAppendingPathComponent(std::string_view base, std::string_view component) {
    std::string joined(base);
    if (!base.empty()) joined += '/';
    joined += component;
    const auto isSlashPair = [](char a, char b) { return a == '/' && b == '/'; };
    joined.erase(std::unique(joined.begin(), joined.end(), isSlashPair), joined.end());
    if (joined.size() > 1 && joined.ends_with('/')) joined.pop_back();
    return joined;
}
