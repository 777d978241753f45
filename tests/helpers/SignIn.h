// Adapters and records for tests of the OAuth2 sign-in.

#pragma once

#include <KorvoGitService/RKTException.h>
#include <KorvoGitService/RKTService.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

/// An adapter of an application's own, with the endpoints and items that a test gives it.
class SignInServiceClass : public RKTServiceClass {
public:
    std::string authorizeEndpoint = "https://git.example.com/authorize";
    std::string tokenEndpoint = "https://git.example.com/token";
    std::optional<std::vector<RKTURLQueryItem>> additionalItems = std::nullopt;

    RKTURL OAuth2AuthorizeEndpointForCredentials(const RKTServiceCredentials&) const override {
        return RKTURL::URLWithString(authorizeEndpoint).value();
    }
    std::optional<std::vector<RKTURLQueryItem>> OAuth2AuthorizeAdditionalParamtersForCredentials(
        const RKTServiceCredentials&) const override {
        return additionalItems;
    }
    RKTURL OAuth2AccessTokenEndpointForCredentials(const RKTServiceCredentials&) const override {
        return RKTURL::URLWithString(tokenEndpoint).value();
    }
};

/// The reason of the misuse; empty when there is none.
template <class Operation>
std::string misuse(Operation operation) {
    try {
        operation();
    } catch (const RKTInvalidArgumentException& exception) {
        return exception.what();
    }
    return "";
}

/// A record for signing in with nothing of the sign-in set.
inline std::shared_ptr<RKTServiceCredentials> emptySignIn() {
    return std::make_shared<RKTServiceCredentials>(RKTServiceTypeGitHub,
                                                   RKTServiceCredentialTypeOAuth2);
}

/// A record in the middle of a sign-in, with all thirteen properties set.
inline std::shared_ptr<RKTServiceCredentials> filledSignIn() {
    auto credentials = emptySignIn();
    credentials->setURL(RKTURL::URLWithString("https://github.com"));
    credentials->setUser("octavia");
    credentials->setToken("old-token");
    credentials->setRefreshToken("old-refresh-token");
    credentials->setExpiryDate(RKTDate(std::chrono::seconds(1'700'000'000)));
    credentials->setOAuthClientID("a-client");
    credentials->setOAuthClientSecret("client-secret");
    credentials->setOAuthCode("old-code");
    credentials->setOAuthScopes({{"repo", "user"}});
    credentials->setOAuthState("a-state");
    credentials->setOAuthRedirectURL(RKTURL::URLWithString("myapp://oauth/callback"));
    return credentials;
}

/// Whether all thirteen properties of both are the same.
inline bool sameProperties(const RKTServiceCredentials& one, const RKTServiceCredentials& other) {
    const auto properties = [](const RKTServiceCredentials& c) {
        return std::make_tuple(c.serviceType(), c.credentialType(), c.URL(), c.user(), c.token(),
                               c.refreshToken(), c.expiryDate(), c.OAuthClientID(),
                               c.OAuthClientSecret(), c.OAuthCode(), c.OAuthScopes(),
                               c.OAuthState(), c.OAuthRedirectURL());
    };
    return properties(one) == properties(other);
}
