// Proxies, private certificate authorities, time-outs.

#include <future>
#include <iostream>

#include "TestServer.h"

/// Before the first service is made.
static void useCompanyNetwork() {
    auto settings = RKTNetworkSettings::shared();
    settings.proxy = "http://proxy.example.com:3128";
    settings.certificateAuthorityFile = "/etc/ssl/our-company.pem";
    RKTNetworkSettings::setShared(settings);
}

/// This service alone waits no longer than so.
static void limitWaiting(const std::shared_ptr<RKTService>& service,
                         std::chrono::milliseconds longest) {
    auto configuration = RKTURLSessionConfiguration::ephemeralSessionConfiguration();
    configuration.networkSettings.timeoutIntervalForRequest = longest;
    const auto before = service->URLSession();
    service->setURLSession(RKTURLSession::sessionWithConfiguration(configuration, service));
    before->finishTasksAndInvalidate();
}

static std::optional<RKTError> validate(const std::shared_ptr<RKTService>& service) {
    std::promise<std::optional<RKTError>> checked;
    service->validateCredentialsWithCompletionHandler(
        [&](std::optional<RKTError> error) { checked.set_value(std::move(error)); });
    auto error = checked.get_future().get();
    service->finishTasksAndInvalidate();
    return error;
}

int main(int argumentCount, char**) try {
    // A server that takes the request and then says nothing.
    const TestServer server({"--fault", "silence-after-request@/user"});
    if (argumentCount > 1) useCompanyNetwork();  // which is not there

    const auto account = std::make_shared<RKTServiceCredentials>(RKTServiceTypeGitHub,
                                                                 RKTServiceCredentialTypeToken);
    account->setUser("octavia");
    account->setToken("demo-token-octavia");
    const auto service = RKTService::serviceWithCredentials(account);
    limitWaiting(service, std::chrono::milliseconds(300));
    const auto error = validate(service);
    std::cout << (error ? error->localizedDescription() : "There was an answer.") << '\n';
    return error && error->code() == RKTError::NSURLErrorTimedOut ? 0 : 1;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
