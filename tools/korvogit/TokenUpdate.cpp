#include "TokenUpdate.h"

#include <KorvoGitService/RKTMainQueue.h>

#include "ErrorReport.h"

namespace korvogit {

std::optional<RKTError> takeCode(const RKTServiceClass& serviceClass,
                                 RKTServiceCredentials& credentials, const RKTURL& address) {
    std::optional<RKTError> error;
    if (!serviceClass.updateCredentials(credentials, address, &error)) return error;
    if (!credentials.OAuthCode().value_or("").empty()) return std::nullopt;
    return errorForUselessAnswer("The redirect brings no code.");
}

Answer<std::optional<RKTError>> updateToken(
    const RKTServiceClass& serviceClass, const std::string& serviceName,
    const std::shared_ptr<RKTServiceCredentials>& credentials, bool isRefresh,
    std::unique_ptr<SignalWatch> signals, bool spins) {
    Answer<std::optional<RKTError>> answer;
    const auto task = serviceClass.updateOAuth2AccessTokenWithCredentials(
        credentials, isRefresh,
        [&answer](std::optional<RKTError> error) { answer.value = std::move(error); });
    Spinner spinner("Asking " + serviceName, spins);
    answer.signal =
        waitForHandler(RKTMainQueue::fileDescriptor(), *task, std::move(signals), spinner);
    spinner.stop();
    RKTMainQueue::drain();
    if (!answer.value && credentials->token().value_or("").empty()) {
        answer.value = errorForUselessAnswer(serviceName + " answered without a token.");
    }
    return answer;
}

}  // namespace korvogit
