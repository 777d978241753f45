#include "service/OAuth2Error.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "KorvoGitService/KorvoGitServiceBase.h"
#include "KorvoGitService/KorvoGitServiceErrors.h"

namespace rkt {

namespace {

using ErrorCode = std::pair<std::string_view, RKTServiceErrorCode>;

// RFC 6749 section 4.1.2.1.
constexpr std::array errorCodes = {
    ErrorCode("invalid_request", RKTServiceErrorOAuth2InvalidRequest),
    ErrorCode("unauthorized_client", RKTServiceErrorOAuth2UnauthorizedClient),
    ErrorCode("access_denied", RKTServiceErrorOAuth2AccessDenied),
    ErrorCode("unsupported_response_type", RKTServiceErrorOAuth2UnsupportedResponseType),
    ErrorCode("invalid_scope", RKTServiceErrorOAuth2InvalidScope),
    ErrorCode("server_error", RKTServiceErrorOAuth2ServerError),
    ErrorCode("temporarily_unavailable", RKTServiceErrorOAuth2TemporarilyUnavailable),
};

RKTServiceErrorCode codeForError(std::string_view error) {
    const auto* const found = std::ranges::find(errorCodes, error, &ErrorCode::first);
    return found == errorCodes.end() ? RKTServiceErrorOAuth2Unknown : found->second;
}

RKTError serviceError(RKTServiceErrorCode code, std::string description) {
    return {RKTKorvoGitServiceErrorDomain,
            code,
            {{RKTError::NSLocalizedDescriptionKey, std::move(description)}}};
}

}  // namespace

std::optional<RKTError> providerError(const RKTServiceClass::OAuth2ResponseObject& answer) {
    const auto error = answer.find("error");
    if (error == answer.end()) return std::nullopt;
    const auto description = answer.find("error_description");
    RKTError::UserInfo userInfo = {
        {RKTError::NSLocalizedDescriptionKey,
         description != answer.end()
             ? description->second
             : RKTServiceLocalizedString("An unknown OAuth2 error occurred.")}};
    const auto page = answer.find("error_uri");
    if (page != answer.end()) {
        if (auto url = RKTURL::URLWithString(page->second)) {
            userInfo.emplace(RKTError::NSURLErrorKey, *std::move(url));
        }
    }
    return RKTError(RKTKorvoGitServiceErrorDomain, codeForError(error->second),
                    std::move(userInfo));
}

RKTError stateMismatch() {
    return serviceError(
        RKTServiceErrorOAuth2StateMismatch,
        RKTServiceLocalizedString("Could not verify the authenticity of the OAuth2 response."));
}

RKTError invalidTokenAnswer() {
    return serviceError(RKTServiceErrorOAuth2InvalidResponse,
                        RKTServiceLocalizedString("Invalid response from OAuth2 request."));
}

}  // namespace rkt
