// Redirects. The input's first line is the request's URL, a second one the status; the rest is
// "Location".

#include "support/session/Redirect.h"

#include <arpa/inet.h>

#include <algorithm>
#include <iterator>

#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"
#include "support/RequestTarget.h"
#include "support/URLText.h"

namespace {

using fuzz::require;

// What an IPv6 address is worth, with its zone; of an international name what is asked for.
std::string hostOf(const RKTURL& url) {
    const auto host = url.host().value_or("");
    const auto zone = std::min(host.find('%'), host.size());
    in6_addr address{};
    if (inet_pton(AF_INET6, host.substr(0, zone).c_str(), &address) == 1) {
        return std::string(std::begin(address.s6_addr), std::end(address.s6_addr)) +
               host.substr(zone);
    }
    const bool isASCII = std::ranges::all_of(host, [](unsigned char c) { return c < 0x80; });
    const auto target = rkt::requestTarget(url);
    return fuzz::plain::lowered(isASCII ? host : std::get<rkt::RequestTarget>(target).host);
}

std::string originOf(const RKTURL& url) {
    const auto scheme = fuzz::plain::lowered(url.scheme().value_or(""));
    const int port = url.port().value_or(scheme == "https" ? 443 : 80);
    return scheme + " " + hostOf(url) + " " + std::to_string(port);
}

void checkHeaders(const RKTURLRequest& from, const RKTURLRequest& to) {
    const bool keeps = to.valueForHTTPHeaderField("authorization").has_value();
    require(keeps == to.valueForHTTPHeaderField("Cookie").has_value(), "both secrets go or stay");
    if (keeps) require(originOf(*from.URL()) == originOf(*to.URL()), "secrets stay at home");
    require(to.valueForHTTPHeaderField("Accept") == "a/b", "other fields go along");
}

void checkMethod(const RKTURLRequest& request, int status) {
    const bool isKept = status == 307 || status == 308;
    require(request.HTTPMethod() == (isKept ? "POST" : "GET"), "the method by the status");
    require(request.HTTPBody() == (isKept ? "body" : ""), "the body goes with the method");
}

}  // namespace

FUZZ_TARGET(Redirect) {
    const auto base = RKTURL::URLWithString(fuzz::takeLine(input));
    const auto status = static_cast<int>(fuzz::plain::integerIn(fuzz::takeLine(input)) % 1000);
    if (!rkt::isRedirect(status)) return;
    RKTURLRequest request(base);
    request.setHTTPMethod("POST");
    request.setHTTPBody("body");
    request.setValue("Basic c2VjcmV0", "Authorization");
    request.setValue("id=secret", "Cookie");
    request.setValue("a/b", "Accept");

    const auto result = rkt::requestAfterRedirect(request, status, input);
    const auto* next = std::get_if<RKTURLRequest>(&result);
    if (!next) return;
    require(base && next->URL(), "from somewhere to somewhere");
    const rkt::URLText reference(input);
    require(reference.authority || !reference.scheme, "nowhere without an authority");
    const auto to = rkt::requestTarget(next->URL());
    const auto* target = std::get_if<rkt::RequestTarget>(&to);
    require(target != nullptr, "where it leads can be loaded");
    require(fuzz::plain::lowered(*base->scheme()) != "https" || target->scheme == "https",
            "never from https to http");
    checkHeaders(request, *next);
    checkMethod(*next, status);
}
