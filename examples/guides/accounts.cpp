// Describing an account, and signing in with OAuth2.

#include <poll.h>

#include <future>
#include <iostream>
#include <random>

#include "TestServer.h"

/// What a person fills in.
struct Form {
    std::string serviceType;
    std::string credentialType;
    std::string address;  ///< for services that need one
    std::string user;
    std::string secret;
};

static std::shared_ptr<RKTServiceCredentials> accountOf(const Form& form) {
    const auto account =
        std::make_shared<RKTServiceCredentials>(form.serviceType, form.credentialType);
    const auto* service = RKTService::classForServiceType(form.serviceType);
    account->setURL(service->requiresCustomURLForServiceType(form.serviceType)
                        ? RKTURL::URLWithString(form.address)
                        : service->defaultURLForServiceType(form.serviceType));
    account->setUser(form.user);
    account->setToken(form.secret);
    return account;
}

/// What a form for a new account offers.
static void printServices() {
    for (const auto& [type, service] : RKTService::classesByServiceType()) {
        std::cout << service->localizedNameForServiceType(type).value_or(type) << '\n';
        if (service->requiresCustomURLForServiceType(type)) std::cout << "  asks for an address\n";
        for (const auto& credentialType : service->supportedCredentialTypesForServiceType(type)) {
            const auto name = RKTServiceCredentials::localizedNameForCredentialType(credentialType);
            std::cout << "  takes: " << name.value_or(credentialType) << '\n';
        }
        if (const auto help = service->personalAccessTokenHelpURLForServiceType(type)) {
            std::cout << "  about tokens: " << help->absoluteString() << '\n';
        }
    }
}

/// Nobody can guess it, so that a redirect which brings it back is the answer to our own question.
static std::string freshState() {
    std::random_device random;
    std::string state;
    for (int i = 0; i < 8; ++i) state += std::to_string(random());
    return state;
}

static std::shared_ptr<RKTServiceCredentials> beginSignIn() {
    const auto account = std::make_shared<RKTServiceCredentials>(RKTServiceTypeGitHub,
                                                                 RKTServiceCredentialTypeOAuth2);
    account->setURL(RKTURL::URLWithString("https://github.com"));
    account->setOAuthClientID("demo-client-expiring");
    account->setOAuthClientSecret("demo-secret-expiring");
    account->setOAuthScopes({{"repo"}});
    account->setOAuthRedirectURL(RKTURL::URLWithString("http://127.0.0.1/callback"));
    account->setOAuthState(freshState());
    return account;
}

/// `redirect` is the address to which the browser was sent back. `done` runs on the main queue.
static void finishSignIn(const std::shared_ptr<RKTServiceCredentials>& account,
                         const RKTURL& redirect,
                         const std::function<void(std::optional<RKTError>)>& done) {
    const auto* gitHub = RKTService::classForServiceType(RKTServiceTypeGitHub);
    std::optional<RKTError> error;
    if (!gitHub->updateCredentials(*account, redirect, &error)) return done(error);
    gitHub->updateOAuth2AccessTokenWithCredentials(account, false, done);
}

/// Before the token's end, or after a request that ended with RKTServiceErrorUnauthorized.
static void renewToken(const std::shared_ptr<RKTServiceCredentials>& account,
                       const std::function<void(std::optional<RKTError>)>& done) {
    account->setOAuthCode(account->refreshToken());
    const auto* gitHub = RKTService::classForServiceType(RKTServiceTypeGitHub);
    gitHub->updateOAuth2AccessTokenWithCredentials(account, true, done);
}

/// The person at the browser, who is octavia and allows it. A browser would go to the address to
/// which it is redirected; what is asked for here is that address.
static RKTURL browse(const RKTURL& authorizeURL) {
    RKTURLRequest request(authorizeURL);
    request.setHTTPMethod("POST");
    request.setHTTPBody("login=octavia&decision=allow");
    std::promise<std::optional<std::string>> answered;
    const auto task = RKTURLSession::sharedSession()->dataTaskWithRequest(
        std::move(request), [&](const auto&, const auto& response, const auto&) {
            answered.set_value(response ? response->valueForHTTPHeaderField("Location")
                                        : std::nullopt);
        });
    task->resume();
    return RKTURL::URLWithString(answered.get_future().get().value()).value();
}

/// Runs the main queue until `done` was called.
static void waitFor(const std::function<void(std::function<void(std::optional<RKTError>)>)>& work,
                    const char* success) {
    bool ended = false;
    work([&](const std::optional<RKTError>& error) {
        std::cout << (error ? error->localizedDescription() : success) << '\n';
        ended = true;
    });
    pollfd waited = {RKTMainQueue::fileDescriptor(), POLLIN, 0};
    while (!ended) {
        poll(&waited, 1, -1);
        RKTMainQueue::drain();
    }
}

int main() try {
    const TestServer server;
    printServices();

    const auto account = beginSignIn();
    const auto* gitHub = RKTService::classForServiceType(RKTServiceTypeGitHub);
    const auto shown = gitHub->OAuth2AuthorizeURLForCredentials(*account);
    const RKTURL redirect = browse(shown.value());
    waitFor([&](const auto& done) { finishSignIn(account, redirect, done); }, "Signed in.");
    const auto first = account->token();
    waitFor([&](const auto& done) { renewToken(account, done); }, "Renewed.");
    if (!first || first == account->token()) return 1;

    const auto listed = RKTService::serviceWithCredentials(
        accountOf({RKTServiceTypeGitLab, RKTServiceCredentialTypeToken, "", "octavia",
                   "demo-token-octavia"}));
    std::promise<std::optional<RKTError>> checked;
    listed->validateCredentialsWithCompletionHandler(
        [&](std::optional<RKTError> error) { checked.set_value(std::move(error)); });
    const auto error = checked.get_future().get();
    listed->finishTasksAndInvalidate();
    std::cout << (error ? error->localizedDescription() : "The token is good.") << '\n';
    return error ? 1 : 0;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
