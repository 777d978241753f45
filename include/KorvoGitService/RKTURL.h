// A URL as text that is known to be valid, and its parts.

#ifndef KORVOGITSERVICE_RKTURL_H
#define KORVOGITSERVICE_RKTURL_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "KorvoGitService/RKTExport.h"

/// An immutable URL, absolute or relative. Only the characters were checked (RFC 3986 section 2,
/// "[" and "]" anywhere, "#" at most once, "%" only before two hexadecimal digits): the structure
/// is looked at when a part is asked for, and may turn out to be impossible (see RKTURLComponents).
/// The text stays as it was given; nothing is lower-cased, resolved or completed. Only brackets
/// that are not those of an address, which RFC 3986 gives no other place, become "%5B" and "%5D".
class RKT_EXPORT RKTURL {
public:
    /// `URLWithString:`. Nothing when the text holds a character that a URL cannot hold. The empty
    /// text is a URL.
    static std::optional<RKTURL> URLWithString(std::string_view text);

    /// The whole text, user information included: not for logs.
    const std::string& absoluteString() const { return text_; }

    /// The parts, as they stand in the text unless noted; nothing when the URL has no such part,
    /// its structure does not give one, or what it decodes to is not UTF-8. `git.example.com/x` is
    /// all path: without "//" there is no host. `mailto:a@b` has a scheme only: where no "/"
    /// follows the scheme there are no other parts.
    std::optional<std::string> scheme() const;
    /// Decoded. An IPv6 address comes without its brackets here, and with them in RKTURLComponents.
    std::optional<std::string> host() const;
    /// Nothing when it is empty or not all digits; a number too large for the type is the type's
    /// largest.
    std::optional<int> port() const;
    /// Decoded.
    std::optional<std::string> user() const;
    /// As it stands in the text.
    std::optional<std::string> password() const;
    /// Decoded, without one slash at its end unless it is all there is; empty when there is none.
    std::string path() const;
    /// Without "?" or "#".
    std::optional<std::string> query() const;
    /// Without "#".
    std::optional<std::string> fragment() const;

    /// Equality of the texts, character by character.
    friend bool operator==(const RKTURL&, const RKTURL&) = default;

private:
    friend struct RKTURLAccess;
    explicit RKTURL(std::string text) : text_(std::move(text)) {}
    std::string text_;
};

/// A URL's text that is kept elsewhere, as std::string_view is of any text: for parameters. Valid
/// as long as the text stands there.
class RKTURLView {
public:
    /// Of this URL.
    RKTURLView(const RKTURL& url) : text_(url.absoluteString()) {}

    /// The whole text, user information included: not for logs.
    std::string_view absoluteString() const { return text_; }

private:
    friend struct RKTURLAccess;
    explicit RKTURLView(std::string_view text) : text_(text) {}
    std::string_view text_;
};

template <>
struct std::hash<RKTURL> {
    std::size_t operator()(const RKTURL& url) const {
        return std::hash<std::string>()(url.absoluteString());
    }
};

#endif
