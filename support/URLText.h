// Where the parts of a URL stand in its text.

#ifndef KORVOGITSERVICE_SUPPORT_URLTEXT_H
#define KORVOGITSERVICE_SUPPORT_URLTEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "KorvoGitService/RKTURL.h"

struct RKTURLAccess {
    /// RKTURL::URLWithString without a copy: most texts are that of the URL already, and the
    /// others' goes into `room`.
    static std::optional<RKTURLView> viewOfText(std::string_view text, std::string& room);
    /// @param text  is that of a URL
    static RKTURL URLWithTextOfURL(std::string text) { return RKTURL(std::move(text)); }
};

namespace rkt {

/// The five parts of RFC 3986 section 3, as they stand in a text that outlives this.
///
/// Splitting never fails: the rule is that of RFC 3986 appendix B, with the one addition that a
/// scheme must be well-formed. So `git.example.com:8080/x` has the scheme "git.example.com", while
/// `10.0.0.1:8080/x` and `git@host:x` are all path, where the RFC's grammar would refuse them.
struct URLText {
    explicit URLText(std::string_view text);

    std::optional<std::string_view> scheme;
    /// What follows "//", perhaps empty.
    std::optional<std::string_view> authority;
    std::string_view path;
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;
};

/// RFC 3986 section 3.1.
bool isScheme(std::string_view text);

/// The parts of an authority that conforms to RFC 3986 section 3.2, percent-encoded.
struct Authority {
    /// Nothing when the authority is impossible: a port that is no number, a second "@", a second
    /// ":" in the user information, brackets around what is no IP address.
    static std::optional<Authority> parse(std::string_view text);

    std::optional<std::string> user;
    std::optional<std::string> password;
    /// An IPv6 address with its brackets, and within them its zone as in `[fe80::1%25eth0]`
    /// (RFC 6874 section 2).
    std::string host;
    /// Digits without leading zeros, as many as there were. Nothing for the empty port of `host:`.
    std::optional<std::string> port;
};

/// How an IPv6 or future address stands in a URL: within brackets, its zone percent-encoded.
/// Nothing for any other text.
/// @param plainText  not percent-encoded; an IPv6 address with brackets or without
std::optional<std::string> IPLiteral(std::string_view plainText);

/// A URL's text with every bracket percent-encoded that does not stand in a host which begins with
/// one: RFC 3986 gives brackets no other place.
std::string strayBracketsEncoded(std::string_view text);

}  // namespace rkt

#endif
