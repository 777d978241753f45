#include "KorvoGitService/RKTHTTPURLResponse.h"

#include "support/ASCII.h"
#include "support/LibraryBundle.h"
#include "support/StatusTexts.h"

RKTHTTPURLResponse::RKTHTTPURLResponse(std::optional<RKTURL> url, int statusCode,
                                       std::vector<Header> headers)
    : URL_(std::move(url)), statusCode_(statusCode), headers_(std::move(headers)) {}

std::optional<std::string> RKTHTTPURLResponse::valueForHTTPHeaderField(
    std::string_view field) const {
    std::optional<std::string> joined;
    for (const auto& [name, value] : headers_) {
        if (!rkt::equalIgnoringCase(name, field)) continue;
        if (joined) {
            joined->append(", ").append(value);
        } else {
            joined = value;
        }
    }
    return joined;
}

std::string RKTHTTPURLResponse::localizedStringForStatusCode(int statusCode) {
    return rkt::localized(rkt::statusText(statusCode));
}
