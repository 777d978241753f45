// Taking URLs apart and putting them together.

#ifndef KORVOGITSERVICE_RKTURLCOMPONENTS_H
#define KORVOGITSERVICE_RKTURLCOMPONENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTURL.h"

/// A name and an optional value of a URL's query, not percent-encoded. An item without a value is
/// written as the bare name, one with an empty value as "name=".
struct RKTURLQueryItem {
    /// UTF-8, as it is meant.
    std::string name;
    /// UTF-8, as it is meant; nothing is not the empty text.
    std::optional<std::string> value;

    friend bool operator==(const RKTURLQueryItem&, const RKTURLQueryItem&) = default;
};

/// The parts of a URL, each kept as given unless it is set anew. Setters take plain text and
/// percent-encode what the part may not hold; `percentEncoded…` gives what will stand in the URL. A
/// ";" in the path of a URL that is read is percent-encoded too. Parts that are not UTF-8 when
/// decoded read as nothing, a path as empty, and still stand in the URL.
class RKT_EXPORT RKTURLComponents {
public:
    RKTURLComponents() = default;

    /// `componentsWithURL:resolvingAgainstBaseURL:`, without a base. Nothing when the text has a
    /// URL's characters but not its structure: `https://host:80a`, `https://a@b@c/`,
    /// `https://[::1`.
    static std::optional<RKTURLComponents> componentsWithURL(const RKTURL& url);

    /// As given, without ":"; the setter takes ASCII and checks nothing.
    const std::optional<std::string>& scheme() const { return scheme_; }
    void setScheme(std::optional<std::string> scheme) { scheme_ = std::move(scheme); }

    /// User and password, percent-decoded.
    std::optional<std::string> user() const;
    /// Nothing also when there is a user alone.
    std::optional<std::string> password() const;

    /// Decoded; an IPv6 address keeps its brackets and its zone, as in `[fe80::1%eth0]`.
    std::optional<std::string> host() const;
    /// `setHost:`. An IPv6 address may come with or without brackets and gets them. It may have a
    /// zone, "%" and a name, which becomes `%25` and the name (RFC 6874).
    void setHost(const std::optional<std::string>& host);

    /// A port beyond 65535 is refused by the session, not here. Nothing also for one beyond 64
    /// bits, which still stands in the URL.
    std::optional<std::int64_t> port() const;
    void setPort(std::optional<std::int64_t> port);

    /// Decoded; empty when there is none.
    std::string path() const;
    /// As it will stand in the URL.
    const std::string& percentEncodedPath() const { return path_; }
    /// `setPath:`. The text is taken literally: "%41" becomes "%2541", dot segments stay. A ":" in
    /// the first segment of a relative path, which would end a scheme, is percent-encoded.
    void setPath(std::string_view path);

    /// As it will stand in the URL, without "?".
    const std::optional<std::string>& percentEncodedQuery() const { return query_; }
    /// `queryItems`: split at every "&", the first "=" ends the name, percent-decoded, "+" stays
    /// "+". A value that is not UTF-8 after decoding counts as no value, such a name as empty.
    /// Nothing when the URL has no query.
    std::optional<std::vector<RKTURLQueryItem>> queryItems() const;
    /// `setQueryItems:`: replaces the whole query. Nothing removes it; an empty list leaves a bare
    /// "?". Letters, digits and `- . _ ~ ! $ ' ( ) * + , / : ; ? @` stand as they are, everything
    /// else is percent-encoded in upper case.
    void setQueryItems(const std::optional<std::vector<RKTURLQueryItem>>& items);

    /// As it will stand in the URL, without "#". Never sent.
    const std::optional<std::string>& percentEncodedFragment() const { return fragment_; }

    /// `URL`: nothing when the parts cannot stand together (a path that would be read as a host,
    /// for one), so that a URL always reads back to the same parts.
    std::optional<RKTURL> URL() const;

private:
    bool canStandTogether() const;

    std::optional<std::string> scheme_;
    std::optional<std::string> user_;  // percent-encoded, as are the ones below
    std::optional<std::string> password_;
    std::optional<std::string> host_;
    std::optional<std::string> port_;
    std::string path_;
    std::optional<std::string> query_;
    std::optional<std::string> fragment_;
};

/// `stringByAppendingPathComponent:`: base, "/", component, where every run of slashes becomes one
/// and one trailing slash goes.
RKT_EXPORT std::string RKTStringByAppendingPathComponent(std::string_view base,
                                                         std::string_view component);

#endif
