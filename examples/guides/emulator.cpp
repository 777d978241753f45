// A test of an application that asks GitHub, without GitHub.

#include <future>
#include <iostream>

#include "TestServer.h"

// What is to be tested: an application's own function.
static std::optional<RKTError> checkAccount(
    const std::shared_ptr<const RKTServiceCredentials>& account) {
    const auto service = RKTService::serviceWithCredentials(account);
    std::promise<std::optional<RKTError>> checked;
    service->validateCredentialsWithCompletionHandler(
        [&](std::optional<RKTError> error) { checked.set_value(std::move(error)); });
    auto error = checked.get_future().get();
    service->finishTasksAndInvalidate();
    return error;
}

static bool expect(bool fact, const char* what) {
    std::cout << (fact ? "ok      " : "FAILED  ") << what << '\n';
    return fact;
}

int main() try {
    // The account "limited" has used up its limit of requests.
    const TestServer server({"--account", "jo:30", "--account", "limited:5:rate-limited"});

    const auto account = std::make_shared<RKTServiceCredentials>(RKTServiceTypeGitHub,
                                                                 RKTServiceCredentialTypeToken);
    account->setUser("jo");
    account->setToken("demo-token-jo");
    bool good = expect(!checkAccount(account), "a right token is accepted");

    account->setToken("wrong");
    const auto refused = checkAccount(account);
    good &= expect(refused && refused->code() == RKTServiceErrorUnauthorized,
                   "a wrong token is refused");

    account->setUser("limited");
    account->setToken("demo-token-limited");
    const auto limited = checkAccount(account);
    good &= expect(limited && limited->code() == 403, "the limit of requests is told");
    return good ? 0 : 1;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
