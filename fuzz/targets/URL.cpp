// URL texts, their parts, and what a request makes of them. The input is the text.

#include "KorvoGitService/RKTURL.h"

#include <algorithm>

#include "KorvoGitService/RKTURLComponents.h"
#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"
#include "support/RequestTarget.h"
#include "support/URLText.h"

namespace {

namespace plain = fuzz::plain;
using fuzz::require;

std::string withoutBrackets(std::string text) {
    if (text.starts_with('[') && text.ends_with(']')) text = text.substr(1, text.size() - 2);
    return text;
}

void checkSplitting(std::string_view text) {
    const rkt::URLText parts(text);
    std::string together;
    if (parts.scheme) together.append(*parts.scheme).append(":");
    if (parts.authority) together.append("//").append(*parts.authority);
    together.append(parts.path);
    if (parts.query) together.append("?").append(*parts.query);
    if (parts.fragment) together.append("#").append(*parts.fragment);
    require(together == text, "the parts are the whole");
    require(!parts.scheme || rkt::isScheme(*parts.scheme), "the scheme is one");
    require(!parts.authority || parts.authority->find_first_of("/?#") == std::string_view::npos,
            "the authority ends where the rest begins");
    require(!parts.authority || parts.path.empty() || parts.path.starts_with('/'),
            "a path after an authority begins with a slash");
    require(parts.path.find_first_of("?#") == std::string_view::npos, "the path ends at \"?\"");
    require(parts.query == plain::queryOf(text), "the query");
}

/// What both ways of taking a URL apart give.
void checkAgreement(const RKTURL& url, const RKTURLComponents& parts) {
    require(url.scheme() == parts.scheme(), "one scheme");
    require(url.query() == parts.percentEncodedQuery() || !url.query(), "one query");
    require(url.fragment() == parts.percentEncodedFragment() || !url.fragment(), "one fragment");
    const auto host = parts.host();
    if (host && url.host()) {
        require(withoutBrackets(*host) == withoutBrackets(*url.host()), "one host");
    }
    if (const auto port = parts.port(); port && url.port()) {
        require(*port == *url.port() || *port > 1'000'000'000, "one port");
    }
}

void checkComponents(const RKTURL& url) {
    const auto parts = RKTURLComponents::componentsWithURL(url);
    if (!parts) return;
    checkAgreement(url, *parts);
    const auto rebuilt = parts->URL();
    if (!rebuilt) return;
    const auto again = RKTURLComponents::componentsWithURL(*rebuilt);
    require(again.has_value(), "a URL of components has components");
    require(again->scheme() == parts->scheme() && again->user() == parts->user() &&
                again->password() == parts->password() && again->host() == parts->host() &&
                again->port() == parts->port() && again->path() == parts->path() &&
                again->percentEncodedPath() == parts->percentEncodedPath() &&
                again->percentEncodedQuery() == parts->percentEncodedQuery() &&
                again->percentEncodedFragment() == parts->percentEncodedFragment(),
            "components that are written are read back");
    require(again->URL() == rebuilt, "a URL of components stays as it is");
}

/// Parts that are set from plain text are read back.
void checkSetting(std::string_view text) {
    if (!plain::isUTF8(text)) return;
    RKTURLComponents parts;
    parts.setScheme("https");
    parts.setHost("h.example");
    parts.setPath("/" + std::string(text));
    const auto url = parts.URL();
    require(url.has_value(), "any path can be set");
    const auto read = RKTURLComponents::componentsWithURL(*url);
    require(read && read->path() == "/" + std::string(text), "a path is read back");
    require(read->host() == "h.example" && !read->percentEncodedQuery() &&
                !read->percentEncodedFragment(),
            "a path stays within itself");

    parts.setPath("");
    parts.setHost(std::string(text));
    const auto hostURL = parts.URL();
    if (!hostURL) return;
    const auto host = RKTURLComponents::componentsWithURL(*hostURL);
    require(host && host->host().has_value(), "a host that is set is one");
    require(withoutBrackets(*host->host()) == withoutBrackets(std::string(text)) ||
                host->host() == std::string(text),
            "a host is read back");
    require(!host->user() && !host->port() && host->path().empty(), "a host stays within itself");
}

void checkRequest(const RKTURL& url) {
    const auto told = rkt::failingURLString(url);
    require(told.find_first_of("?#@") == std::string::npos, "an error tells no query and no user");
    const auto result = rkt::requestTarget(url);
    const auto* target = std::get_if<rkt::RequestTarget>(&result);
    if (!target) return;
    require(target->scheme == "http" || target->scheme == "https", "a scheme that can be loaded");
    require(!target->host.empty() && target->port >= 0 && target->port <= 65535, "a host and port");
    require(target->pathAndQuery.find('#') == std::string::npos, "no fragment goes out");
    const auto loaded = rkt::requestTarget(RKTURL::URLWithString(target->URLForLoading()));
    const auto* again = std::get_if<rkt::RequestTarget>(&loaded);
    require(
        again && rkt::sameOrigin(*again, *target) && again->pathAndQuery == target->pathAndQuery,
        "what is loaded is what was asked for");
}

}  // namespace

FUZZ_TARGET(URL) {
    checkSetting(input);
    const auto url = RKTURL::URLWithString(input);
    require(url.has_value() == plain::isURLText(input), "a URL's characters, and no others");
    if (!url) return;
    const auto& text = url->absoluteString();
    const bool hasBrackets = input.find_first_of("[]") != std::string_view::npos;
    require(hasBrackets || text == input, "the text is kept");
    require(RKTURL::URLWithString(text) == url, "the text of a URL is that URL");
    checkSplitting(text);
    checkComponents(*url);
    checkRequest(*url);
}
