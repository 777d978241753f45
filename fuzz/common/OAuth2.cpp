#include "fuzz/common/OAuth2.h"

#include <string>
#include <string_view>
#include <variant>

#include "KorvoGitService/KorvoGitServiceBase.h"

namespace fuzz {

namespace {

std::string percentEncoded(const std::string& text, std::string_view standing) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool stands = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                            (c >= 'a' && c <= 'z') || standing.find(c) != std::string_view::npos;
        if (stands) {
            encoded += c;
        } else {
            encoded += {'%', digits[byte / 16u], digits[byte % 16u]};
        }
    }
    return encoded;
}

std::string replaced(const std::string& text, const std::string& what) {
    std::string result;
    for (std::size_t place = 0; place < text.size();) {
        const bool here = text.compare(place, what.size(), what) == 0;
        result += here ? "***" : text.substr(place, 1);
        place += here ? what.size() : 1;
    }
    return result;
}

}  // namespace

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

RKTError withoutSecret(const RKTError& error, const std::string& secret) {
    // The longest form first: the others may stand in it.
    const std::string forms[] = {percentEncoded(secret, "-._~"),
                                 percentEncoded(secret, "-._~!$&'()*+,/:;=?@"), secret};
    const auto told = [&forms](std::string text) {
        for (const auto& form : forms) text = replaced(text, form);
        return text;
    };
    RKTError::UserInfo information;
    for (const auto& [key, value] : error.userInfo()) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            information[key] = told(*text);
        } else if (const auto* url = std::get_if<RKTURL>(&value)) {
            const auto rest = RKTURL::URLWithString(told(url->absoluteString()));
            if (rest) information.emplace(key, *rest);
        }
    }
    return RKTError(error.domain(), error.code(), information);
}

}  // namespace fuzz
