// What to send.

#ifndef KORVOGITSERVICE_RKTURLREQUEST_H
#define KORVOGITSERVICE_RKTURLREQUEST_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTURL.h"

/// A request before it is sent: a plain value. Nothing is checked here; a URL that cannot be
/// loaded, or a header that holds a line end, makes the task fail through its handler.
class RKT_EXPORT RKTURLRequest {
public:
    /// A field's name and value.
    using Header = std::pair<std::string, std::string>;

    /// `requestWithURL:`. Method "GET", no headers, no body. Without a URL the task fails with
    /// NSURLErrorUnsupportedURL.
    explicit RKTURLRequest(std::optional<RKTURL> url) : URL_(std::move(url)) {}

    /// Where to, as given.
    const std::optional<RKTURL>& URL() const { return URL_; }

    /// Sent as it is, in capitals as HTTP has them.
    const std::string& HTTPMethod() const { return method_; }
    void setHTTPMethod(std::string method) { method_ = std::move(method); }

    /// `valueForHTTPHeaderField:`, in any letter case.
    std::optional<std::string> valueForHTTPHeaderField(std::string_view field) const;
    /// `setValue:forHTTPHeaderField:`. Replaces an earlier value of that field; nothing removes it.
    void setValue(std::optional<std::string> value, std::string_view forHTTPHeaderField);
    /// What was set, in order; without those that a session adds by itself.
    const std::vector<Header>& allHTTPHeaderFields() const { return headers_; }

    /// Any bytes; empty sends none. Without a "Content-Type" they go out as
    /// "application/x-www-form-urlencoded".
    const std::string& HTTPBody() const { return body_; }
    void setHTTPBody(std::string body) { body_ = std::move(body); }

private:
    std::optional<RKTURL> URL_;
    std::string method_ = "GET";
    std::vector<Header> headers_;
    std::string body_;
};

#endif
