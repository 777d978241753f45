// The second leg of the sign-in: from a code, or a refresh token, to an access token.

#include <chrono>
#include <utility>
#include <variant>

#include "KorvoGitService/RKTMainQueue.h"
#include "KorvoGitService/RKTService.h"
#include "core/Misuse.h"
#include "core/Secrets.h"
#include "service/OAuth2TokenAnswer.h"
#include "support/Percent.h"

namespace {

std::string form(const std::vector<RKTURLQueryItem>& fields) {
    std::string text;
    for (const auto& [name, value] : fields) {
        if (!value) continue;
        if (!text.empty()) text += '&';
        text += name + '=' + rkt::formValueEncoded(*value);
    }
    return text;
}

std::string tokenRequestBody(const RKTServiceCredentials& credentials, bool isRefresh) {
    const auto redirect = isRefresh ? std::nullopt : credentials.OAuthRedirectURL();
    return form({
        {"grant_type", isRefresh ? "refresh_token" : "authorization_code"},
        {isRefresh ? "refresh_token" : "code", credentials.OAuthCode()},
        {"client_id", credentials.OAuthClientID()},
        {"client_secret", credentials.OAuthClientSecret()},
        {"redirect_uri", redirect ? std::optional(redirect->absoluteString()) : std::nullopt},
    });
}

}  // namespace

RKTURLRequest RKTServiceClass::OAuth2AccessTokenRequestForCredentials(
    const RKTServiceCredentials& credentials, bool isRefresh) const {
    if (this == RKTService::serviceClass()) {
        rkt::raiseNeedsConcreteSubclass("OAuth2AccessTokenRequestForCredentials:isRefresh:");
    }
    RKTURLRequest request(OAuth2AccessTokenEndpointForCredentials(credentials));
    request.setHTTPMethod("POST");
    request.setValue("application/x-www-form-urlencoded", "Content-Type");
    request.setHTTPBody(tokenRequestBody(credentials, isRefresh));
    return request;
}

bool RKTServiceClass::updateCredentials(RKTServiceCredentials& credentials,
                                        const RKTHTTPURLResponse& withOAuth2AccessTokenResponse,
                                        std::string_view data,
                                        std::optional<RKTError>* error) const {
    if (this == RKTService::serviceClass()) {
        rkt::raiseNeedsConcreteSubclass(
            "updateCredentials:withOAuth2AccessTokenResponse:data:error:");
    }
    const auto now = std::chrono::floor<RKTDate::duration>(std::chrono::system_clock::now());
    auto answer = rkt::readTokenAnswer(
        withOAuth2AccessTokenResponse.valueForHTTPHeaderField("Content-Type"), data, now);
    if (const auto* reason = std::get_if<RKTError>(&answer)) {
        if (error) *error = rkt::Secrets(credentials).removedFrom(*reason);
        return false;
    }
    auto& tokens = std::get<rkt::OAuth2Tokens>(answer);
    credentials.setToken(std::move(tokens.token));
    credentials.setRefreshToken(std::move(tokens.refreshToken));
    credentials.setExpiryDate(tokens.expiryDate);
    return true;
}

std::shared_ptr<RKTURLSessionDataTask> RKTServiceClass::updateOAuth2AccessTokenWithCredentials(
    std::shared_ptr<RKTServiceCredentials> credentials, bool isRefresh,
    OAuth2CompletionHandler completionHandler) const {
    if (this == RKTService::serviceClass()) {
        rkt::raiseNeedsConcreteSubclass(
            "updateOAuth2AccessTokenWithCredentials:isRefresh:completionHandler:");
    }
    if (!credentials) {
        credentials = std::make_shared<RKTServiceCredentials>(std::nullopt, std::nullopt);
    }
    auto request = OAuth2AccessTokenRequestForCredentials(*credentials, isRefresh);

    // As they were sent: the record may hold others when the answer comes.
    rkt::Secrets secrets(*credentials);
    auto finish = [this, secrets = std::move(secrets), credentials = std::move(credentials),
                   handler = std::move(completionHandler)](
                      const std::optional<std::string>& data,
                      const std::shared_ptr<const RKTHTTPURLResponse>& response,
                      std::optional<RKTError> error) {
        if (!error) updateCredentials(*credentials, *response, *data, &error);
        if (error) error = secrets.removedFrom(*error);
        if (handler) handler(std::move(error));
    };
    auto task = RKTURLSession::sharedSession()->dataTaskWithRequest(
        std::move(request),
        [finish = std::move(finish)](std::optional<std::string> data,
                                     std::shared_ptr<const RKTHTTPURLResponse> response,
                                     std::optional<RKTError> error) mutable {
            RKTMainQueue::async([finish = std::move(finish), data = std::move(data),
                                 response = std::move(response),
                                 error = std::move(error)] { finish(data, response, error); });
        });
    task->resume();
    return task;
}
