#include "support/session/Redirect.h"

#include <uriparser/Uri.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "KorvoGitService/RKTURLComponents.h"
#include "support/Percent.h"
#include "support/RequestTarget.h"
#include "support/URLText.h"

namespace rkt {
namespace {

struct Grammar {
    UriUriA uri{};
    bool parsed = false;

    explicit Grammar(const std::string& text) {
        parsed = uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(), nullptr) ==
                 URI_SUCCESS;
    }
    Grammar() = default;
    Grammar(const Grammar&) = delete;
    Grammar& operator=(const Grammar&) = delete;
    ~Grammar() { uriFreeUriMembersA(&uri); }
};

// All that a reference may hold, its own percent-encoding included.
constexpr CharacterTable referenceCharacters("-._~!$&'()*+,;=:@/?%#[]");
constexpr CharacterTable fragmentCharacters("-._~!$&'()*+,;=:@/?%[]");

/// `text` with every "%" percent-encoded that two hexadecimal digits do not follow.
std::string strayPercentsEncoded(std::string_view text) {
    std::string result;
    for (; !text.empty(); text.remove_prefix(1)) {
        const bool isStray = text.front() == '%' && !percentEncodedByte(text);
        result.append(isStray ? "%25" : text.substr(0, 1));
    }
    return result;
}

/// Servers send characters that a URI may not hold, or not where they stand. They are
/// percent-encoded, as every client does.
std::string URIReference(std::string_view location) {
    std::string text = strayPercentsEncoded(percentEncode(location, referenceCharacters));
    if (const std::size_t hash = text.find('#'); hash != std::string::npos) {
        text.replace(hash + 1, text.npos,
                     percentEncode(std::string_view(text).substr(hash + 1), fragmentCharacters));
    }
    return strayBracketsEncoded(text);
}

/// `text` with another authority, where it has one.
std::string withAuthority(std::string_view text, std::string_view authority) {
    std::string result(text);
    if (const auto old = URLText(text).authority) {
        result.replace(static_cast<std::size_t>(old->data() - text.data()), old->size(), authority);
    }
    return result;
}

/// RFC 3986 section 5.2.
std::optional<std::string> resolvedByGrammar(const std::string& base,
                                             const std::string& reference) {
    const Grammar absolute(base);
    const Grammar relative(reference);
    if (!absolute.parsed || !relative.parsed) return std::nullopt;
    Grammar target;
    if (uriAddBaseUriExA(&target.uri, &relative.uri, &absolute.uri, URI_RESOLVE_STRICTLY) !=
        URI_SUCCESS) {
        return std::nullopt;
    }
    int length = 0;
    if (uriToStringCharsRequiredA(&target.uri, &length) != URI_SUCCESS) return std::nullopt;
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    if (uriToStringA(text.data(), &target.uri, length + 1, nullptr) != URI_SUCCESS)
        return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// "Location" is a URI reference, relative to the request's URL (RFC 9110 section 10.2.2). Nothing
// within an authority takes part in resolving, and uriparser knows no zones of addresses: it is
// shown a name instead. Where there is a scheme but no authority, as in `https:/x`, there is none
// to go to, and what the path becomes could look like one.
std::optional<RKTURL> resolved(const RKTURL& base, std::string_view location) {
    const std::string reference = URIReference(location);
    const URLText parts(reference);
    if (parts.scheme && !parts.authority) return RKTURL::URLWithString(reference);
    const auto authority =
        parts.authority ? parts.authority : URLText(base.absoluteString()).authority;
    const auto target =
        resolvedByGrammar(withAuthority(base.absoluteString(), "h"), withAuthority(reference, "h"));
    if (!target || !authority) return std::nullopt;
    return RKTURL::URLWithString(withAuthority(*target, *authority));
}

// What a request that has lost its body must not say (RFC 9110 section 15.4).
constexpr auto fieldsOfABody = {"Content-Encoding", "Content-Language", "Content-Length",
                                "Content-Location", "Content-Type",     "Digest",
                                "Last-Modified",    "Transfer-Encoding"};

bool becomesGet(const std::string& method, int status) {
    if (status == 303) return method != "GET" && method != "HEAD";
    return (status == 301 || status == 302) && method == "POST";
}

}  // namespace

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

std::variant<RKTURLRequest, RKTError::URLCode> requestAfterRedirect(const RKTURLRequest& request,
                                                                    int status,
                                                                    std::string_view location) {
    const auto from = requestTarget(request.URL());
    const auto* origin = std::get_if<RequestTarget>(&from);
    if (!origin) return RKTError::NSURLErrorBadURL;
    const auto url = resolved(*RKTURL::URLWithString(origin->URLForLoading()), location);
    if (!url) return RKTError::NSURLErrorBadServerResponse;
    const auto to = requestTarget(url);
    if (const auto* problem = std::get_if<TargetProblem>(&to)) {
        return *problem == TargetProblem::UnsupportedURL ? RKTError::NSURLErrorUnsupportedURL
                                                         : RKTError::NSURLErrorBadServerResponse;
    }
    const auto& target = std::get<RequestTarget>(to);
    if (origin->scheme == "https" && target.scheme != "https")
        return RKTError::NSURLErrorBadServerResponse;

    RKTURLRequest next(url);
    next.setHTTPMethod(request.HTTPMethod());
    next.setHTTPBody(request.HTTPBody());
    for (const auto& [name, value] : request.allHTTPHeaderFields()) next.setValue(value, name);
    if (becomesGet(request.HTTPMethod(), status)) {
        next.setHTTPMethod("GET");
        next.setHTTPBody({});
        for (const auto* const ofBody : fieldsOfABody) next.setValue(std::nullopt, ofBody);
    }
    if (!sameOrigin(*origin, target)) {
        if (!next.HTTPBody().empty()) return RKTError::NSURLErrorBadServerResponse;
        next.setValue(std::nullopt, "Authorization");
        next.setValue(std::nullopt, "Cookie");
        next.setValue(std::nullopt, "Host");
    }
    return next;
}

}  // namespace rkt
