// The first leg of the sign-in: to the provider's page and back.

#include <utility>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/RKTService.h"
#include "core/Misuse.h"
#include "core/Secrets.h"
#include "service/OAuth2Error.h"

namespace {

std::string joinedWithCommas(const std::vector<std::string>& texts) {
    std::string joined;
    for (const auto& text : texts) {
        if (&text != &texts.front()) joined += ',';
        joined += text;
    }
    return joined;
}

std::vector<RKTURLQueryItem> queryItems(const RKTServiceCredentials& credentials) {
    std::vector<RKTURLQueryItem> items = {{"client_id", credentials.OAuthClientID()},
                                          {"response_type", "code"}};
    if (const auto url = credentials.OAuthRedirectURL()) {
        items.push_back({"redirect_uri", url->absoluteString()});
    }
    if (const auto scopes = credentials.OAuthScopes()) {
        items.push_back({"scope", joinedWithCommas(*scopes)});
    }
    if (auto state = credentials.OAuthState()) items.push_back({"state", std::move(state)});
    return items;
}

}  // namespace

std::optional<RKTURL> RKTServiceClass::OAuth2AuthorizeURLForCredentials(
    const RKTServiceCredentials& credentials) const {
    if (this == RKTService::serviceClass()) {
        rkt::raiseNeedsConcreteSubclass("OAuth2AuthorizeURLForCredentials:");
    }
    auto components =
        RKTURLComponents::componentsWithURL(OAuth2AuthorizeEndpointForCredentials(credentials));
    if (!components) return std::nullopt;
    auto items = queryItems(credentials);
    if (auto additional = OAuth2AuthorizeAdditionalParamtersForCredentials(credentials)) {
        std::move(additional->begin(), additional->end(), std::back_inserter(items));
    }
    components->setQueryItems(items);
    return components->URL();
}

bool RKTServiceClass::updateCredentials(RKTServiceCredentials& credentials,
                                        const RKTURL& withOAuth2AuthorizeResponseURL,
                                        std::optional<RKTError>* error) const {
    if (this == RKTService::serviceClass()) {
        rkt::raiseNeedsConcreteSubclass("updateCredentials:withOAuth2AuthorizeResponseURL:error:");
    }
    const auto fail = [error](RKTError reason) {
        if (error) *error = std::move(reason);
        return false;
    };
    const OAuth2ResponseObject answer = kc_queryParameters(withOAuth2AuthorizeResponseURL);
    const auto value = [&answer](std::string_view name) {
        const auto found = answer.find(name);
        return found == answer.end() ? std::nullopt : std::optional(found->second);
    };
    // Before anything else is believed: who forges a redirect can forge its error, too.
    const auto state = credentials.OAuthState();
    if (state && value("state") != state) return fail(rkt::stateMismatch());
    if (const auto reason = OAuth2AccessErrorWithResponseObject(answer)) {
        rkt::Secrets secrets(credentials);
        secrets.add(value("code"));
        return fail(secrets.removedFrom(*reason));
    }
    credentials.setOAuthCode(value("code"));
    return true;
}

std::optional<RKTError> RKTServiceClass::OAuth2AccessErrorWithResponseObject(
    const OAuth2ResponseObject& responseObject) const {
    return rkt::providerError(responseObject);
}
