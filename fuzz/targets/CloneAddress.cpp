// Addresses that `git clone` takes. The input is the address.

#include <algorithm>

#include "KorvoGitService/KorvoGit.h"
#include "KorvoGitService/RKTURLComponents.h"
#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"

namespace {

namespace plain = fuzz::plain;
using fuzz::require;

struct SCPForm {
    std::string user;
    std::string host;
    std::string path;
};

/// `user@host:path`, with no slash before the ":", and a host of letters, digits, "-", "." and "_".
/// Addresses in brackets are left to the other checks; around a user, too, they are no such form.
std::optional<SCPForm> readPlainly(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || text.substr(0, colon).find('/') != text.npos) return {};
    const auto at = text.substr(0, colon).rfind('@');
    if (at == std::string_view::npos) return {};
    SCPForm form{std::string(text.substr(0, at)), std::string(text.substr(at + 1, colon - at - 1)),
                 std::string(text.substr(colon + 1))};
    constexpr std::string_view hostCharacters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._";
    const bool hasControls =
        std::ranges::any_of(form.path, [](unsigned char c) { return c < 0x20 || c == 0x7F; });
    if (form.user.empty() || form.user.starts_with('[') || form.host.empty() || form.path.empty() ||
        hasControls || form.host.find_first_not_of(hostCharacters) != std::string::npos ||
        !plain::isUTF8(text)) {
        return {};
    }
    return form;
}

void checkSCPForm(const SCPForm& form, const std::optional<RKTURL>& url) {
    require(url.has_value(), "an address in scp form is one");
    const auto parts = RKTURLComponents::componentsWithURL(*url);
    require(parts && parts->scheme() == "ssh", "the scheme is ssh");
    require(parts->user() == form.user && !parts->password(), "the user");
    require(parts->host() == form.host && !parts->port(), "the host");
    const auto path = (form.path.starts_with('/') ? "" : "/") + form.path;
    require(parts->path() == path, "the path");
    require(!parts->percentEncodedQuery() && !parts->percentEncodedFragment(), "nothing else");
}

}  // namespace

FUZZ_TARGET(CloneAddress) {
    const auto url = rkt_URLWithString(input);
    if (const auto form = readPlainly(input)) checkSCPForm(*form, url);
    if (!url) return;
    const auto scheme = url->scheme();
    require(scheme && !scheme->empty(), "a clone address has a scheme");
    const bool isFile = plain::lowered(*scheme) == "file";
    require(isFile ? !url->path().empty() : !url->host().value_or("").empty(),
            "a clone address has a host, or is a file");
    require(rkt_URLWithString(url->absoluteString()) == url, "a clone address stays as it is");
    const bool isKept = RKTURL::URLWithString(input) == url;
    require(isKept || *scheme == "ssh", "only the scp form is written anew");
}
