#include "tests/reliability/Operations.h"

#include <KorvoGitService/RKTGitHubService.h>

#include <stdexcept>

#include "tests/helpers/MainThread.h"

namespace {

std::shared_ptr<RKTServiceCredentials> account() {
    auto credentials = std::make_shared<RKTServiceCredentials>(RKTServiceTypeGitHub,
                                                               RKTServiceCredentialTypeToken);
    credentials->setUser("octavia");
    credentials->setToken("demo-token-octavia");
    credentials->setOAuthClientID("demo-client");
    credentials->setOAuthClientSecret("demo-secret");
    credentials->setOAuthCode("a-code");
    return credentials;
}

void answer(emulator::Server& server, const std::string& path, const std::string& body) {
    auto answer = emulator::jsonAnswer(200, body);
    answer.compressible = true;
    server.script({.path = path}, answer);
}

}  // namespace

const char* nameOf(Operation operation) {
    switch (operation) {
        case Operation::Validate:
            return "Validate";
        case Operation::List:
            return "List";
        case Operation::TokenExchange:
            break;
    }
    return "TokenExchange";
}

void answerEverybody(emulator::Server& server) {
    const std::string text(4000, 'o');
    answer(server, "/user", R"({"login": "octavia", "bio": ")" + text + R"("})");
    answer(server, "/user/repos",
           R"([{"id": 1, "name": "demo", "description": ")" + text + R"("}])");
    answer(server, "/login/oauth/access_token",
           R"({"access_token": "new-token", "note": ")" + text + R"("})");
}

Asker::Asker(Operation operation) : operation_(operation), credentials_(account()) {
    if (operation != Operation::TokenExchange) {
        service_ = RKTService::serviceWithCredentials(credentials_);
    }
}

Asker::~Asker() {
    if (service_) service_->invalidateAndCancel();
}

std::shared_ptr<RKTURLSessionDataTask> Asker::start(const std::shared_ptr<Calls>& calls) const {
    switch (operation_) {
        case Operation::Validate:
            return service_->validateCredentialsWithCompletionHandler(
                [calls](auto error) { calls->put(std::move(error)); });
        case Operation::List:
            return service_->fetchRepositoriesWithRequest(
                nullptr, [calls](const auto& result) { calls->put(result->error()); });
        case Operation::TokenExchange:
            break;
    }
    return RKTGitHubService::serviceClass()->updateOAuth2AccessTokenWithCredentials(
        credentials_, false, [calls](auto error) { calls->put(std::move(error)); });
}

std::optional<RKTError> Asker::outcome(const RKTURLSessionDataTask& task,
                                       const std::shared_ptr<Calls>& calls) const {
    if (operation_ == Operation::TokenExchange) {
        runMainQueueUntil([&] { return calls->count() > 0; });
    }
    auto error = calls->first();
    drain(queue());  // a second call would have come before the end of this
    if (operation_ == Operation::TokenExchange) RKTMainQueue::drain();
    if (calls->count() != 1) throw std::runtime_error("the handler ran more than once");
    if (calls.use_count() != 1) throw std::runtime_error("the handler was not let go");
    if (task.state() != RKTURLSessionDataTask::State::Completed) {
        throw std::runtime_error("the task was not completed");
    }
    return error;
}

std::optional<RKTError> Asker::ask() const {
    const auto calls = std::make_shared<Calls>();
    return outcome(*start(calls), calls);
}

RKTOperationQueue& Asker::queue() const {
    const auto session = service_ ? service_->URLSession() : RKTURLSession::sharedSession();
    return *session->delegateQueue();  // the session holds it, and the service or process that
}

bool Asker::endsWithoutRest() {
    if (!service_) return true;
    const std::weak_ptr<RKTService> observed = service_;
    const auto queue = service_->URLSession()->delegateQueue();
    service_->finishTasksAndInvalidate();
    service_.reset();
    drain(*queue);
    return observed.expired();
}
