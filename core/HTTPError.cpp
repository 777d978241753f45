#include "core/HTTPError.h"

#include <string>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTHTTPURLResponse.h"
#include "support/Text.h"

namespace rkt {

bool isFailureStatus(int statusCode) {
    return statusCode < 200 || statusCode > 299;
}

RKTError errorWithHTTPStatus(int statusCode, const std::optional<RKTJSONValue>& body) {
    RKTError::UserInfo userInfo;
    userInfo.emplace(RKTError::NSLocalizedDescriptionKey,
                     capitalized(RKTHTTPURLResponse::localizedStringForStatusCode(statusCode)));
    const auto message = body ? kc_objectOfClass<std::string_view>(*body, "message") : std::nullopt;
    if (message) {
        userInfo.emplace(RKTError::NSLocalizedRecoverySuggestionErrorKey, std::string(*message));
    }
    std::int64_t code = statusCode;
    if (statusCode == 401) code = RKTServiceErrorUnauthorized;
    return RKTError(RKTKorvoGitServiceErrorDomain, code, std::move(userInfo));
}

}  // namespace rkt
