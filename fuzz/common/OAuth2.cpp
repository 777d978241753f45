#include "fuzz/common/OAuth2.h"

#include "KorvoGitService/KorvoGitServiceBase.h"

namespace fuzz {

std::optional<RKTError> expectedOAuth2Error(const plain::Dictionary& answer) {
    const auto error = answer.find("error");
    if (error == answer.end()) return std::nullopt;
    static const plain::Items known = {
        {"2001", "invalid_request"},        {"2002", "unauthorized_client"},
        {"2003", "access_denied"},          {"2004", "unsupported_response_type"},
        {"2005", "invalid_scope"},          {"2006", "server_error"},
        {"2007", "temporarily_unavailable"}};
    long long code = 2000;
    for (const auto& [number, name] : known) {
        if (error->second == name) code = plain::integerIn(number);
    }
    const auto description = answer.find("error_description");
    RKTError::UserInfo information;
    information["NSLocalizedDescription"] =
        description == answer.end() ? RKTServiceLocalizedString("An unknown OAuth2 error occurred.")
                                    : description->second;
    const auto page = answer.find("error_uri");
    if (page != answer.end() && plain::isURLText(page->second)) {
        information.emplace("NSURL", *RKTURL::URLWithString(page->second));
    }
    return RKTError("RKTKorvoGitServiceErrorDomain", code, information);
}

}  // namespace fuzz
