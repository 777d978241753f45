#include <KorvoGitService/KorvoGitService.h>

#include <cstdlib>
#include <future>
#include <iostream>

int main() {
    // An account: which service, which kind of secret, where, who, and the secret itself.
    const auto credentials = std::make_shared<RKTServiceCredentials>(RKTServiceTypeGitHub,
                                                                     RKTServiceCredentialTypeToken);
    credentials->setUser("octavia");
    if (const char* token = std::getenv("KORVOGIT_TOKEN")) credentials->setToken(token);

    const auto service = RKTService::serviceWithCredentials(credentials);
    const auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setSortKey(RKTServiceSortKeyUpdated);
    request->setCountPerPage(50);

    // The handler runs once, on a queue of the service. This program has nothing else to do, so it
    // waits; an application would hand the result to its own event loop.
    std::promise<std::shared_ptr<RKTServiceArrayResult>> listed;
    service->fetchRepositoriesWithRequest(request,
                                          [&](const auto& result) { listed.set_value(result); });
    const auto result = listed.get_future().get();
    service->finishTasksAndInvalidate();  // until then the service stays alive

    if (const auto error = result->error()) {
        std::cerr << error->localizedDescription() << '\n';
        return 1;
    }
    for (const auto& repository : result->results().value_or(RKTServiceArrayResult::Results())) {
        std::cout << repository->fullName().value_or("?") << '\n';
    }
}
