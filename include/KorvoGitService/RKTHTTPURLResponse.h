// What came back, apart from the body.

#ifndef KORVOGITSERVICE_RKTHTTPURLRESPONSE_H
#define KORVOGITSERVICE_RKTHTTPURLRESPONSE_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTURL.h"

/// The status and headers of the final answer, after redirects and interim answers. Immutable.
class RKT_EXPORT RKTHTTPURLResponse {
public:
    /// A field's name and value.
    using Header = std::pair<std::string, std::string>;

    /// @param headers  as they came, in order, a name possibly several times
    RKTHTTPURLResponse(std::optional<RKTURL> url, int statusCode, std::vector<Header> headers);

    /// Where the answer came from; after a redirect not where the request went first.
    const std::optional<RKTURL>& URL() const { return URL_; }
    /// The HTTP status (RFC 9110 section 15), whichever it is: here no status is an error.
    int statusCode() const { return statusCode_; }

    /// `valueForHTTPHeaderField:`, in any letter case. Several fields of one name are joined with
    /// ", " (RFC 9110 section 5.3). Nothing when there is none; an empty field is an empty text.
    std::optional<std::string> valueForHTTPHeaderField(std::string_view field) const;
    /// As they came, in order, a name possibly several times.
    const std::vector<Header>& allHeaderFields() const { return headers_; }

    /// `localizedStringForStatusCode:`: the text of the IANA HTTP Status Code Registry in lower
    /// case ("not found"), or one for the status's class where the registry has none; localized.
    static std::string localizedStringForStatusCode(int statusCode);

private:
    std::optional<RKTURL> URL_;
    int statusCode_;
    std::vector<Header> headers_;
};

#endif
