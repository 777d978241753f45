// Asking a service and waiting for its answer.

#pragma once

#include <KorvoGitService/RKTError.h>
#include <KorvoGitService/RKTException.h>
#include <KorvoGitService/RKTService.h>

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "AccountOptions.h"
#include "NetworkOptions.h"
#include "Signals.h"
#include "Spinner.h"

namespace korvogit {

/// What came of a question: what the library's handler received, and the signal that cancelled the
/// task, 0 when none did.
template <class Value>
struct Answer {
    Value value;
    int signal = 0;
};

/// The program's status after an answer.
int exitStatus(const std::optional<RKTError>& error, int signal);

/// A descriptor that becomes readable when another thread says so.
class WakeUp {
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    void wake();
    int fileDescriptor() const { return descriptor_; }

private:
    int descriptor_;
};

/// Waits for a task's handler, or for its turn. SIGINT or SIGTERM cancels the task, and the wait
/// goes on; a second one ends the program at once.
/// @param descriptor becomes readable when the handler has run, or may run
/// @return the signal, 0 when there was none
int waitForHandler(int descriptor, RKTURLSessionDataTask& task,
                   std::unique_ptr<SignalWatch> signals, Spinner& spinner);

/// What to tell when a service type is registered, but its class has no network operations: domain
/// "RKTInvalidArgumentException", code 0.
RKTError errorForMissingOperation(const std::string& serviceName);

inline void setError(std::optional<RKTError>& answer, RKTError error) {
    answer = std::move(error);
}
inline void setError(std::shared_ptr<RKTServiceArrayResult>& answer, RKTError error) {
    answer = std::make_shared<RKTServiceArrayResult>();
    answer->setError(std::move(error));
}

/// The service of a record, asked one question after the other.
class Conversation {
public:
    Conversation(const std::shared_ptr<RKTServiceCredentials>& credentials,
                 std::string serviceName);
    ~Conversation() { service_->finishTasksAndInvalidate(); }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /// Lets `start` begin one task, and waits for the task's handler.
    /// @param start given the service and a handler of one argument; returns the task
    template <class Value, class Start>
    Answer<Value> ask(Start start, Spinner& spinner) {
        struct State {
            std::promise<Value> promise;
            WakeUp handlerHasRun;
        };
        auto signals = std::make_unique<SignalWatch>();
        const auto state = std::make_shared<State>();
        Answer<Value> answer;
        try {
            const auto task = start(*service_, [state](Value value) {
                state->promise.set_value(std::move(value));
                state->handlerHasRun.wake();
            });
            answer.signal = waitForHandler(state->handlerHasRun.fileDescriptor(), *task,
                                           std::move(signals), spinner);
            answer.value = state->promise.get_future().get();
        } catch (const RKTInvalidArgumentException&) {
            setError(answer.value, errorForMissingOperation(serviceName_));
        }
        return answer;
    }

private:
    std::shared_ptr<RKTService> service_;
    std::string serviceName_;
};

/// The one question of a short conversation.
/// @param spins whether a person is waiting for text
template <class Value, class Start>
Answer<Value> ask(const std::shared_ptr<RKTServiceCredentials>& credentials,
                  const std::string& serviceName, bool spins, Start start) {
    Conversation conversation(credentials, serviceName);
    Spinner spinner("Asking " + serviceName, spins);
    return conversation.ask<Value>(std::move(start), spinner);
}

/// The same for the account that the options describe.
/// @throws UsageError
template <class Value, class Start>
Answer<Value> ask(const AccountOptions& account, const NetworkOptions& network, bool spins,
                  Start start) {
    network.apply();
    return ask<Value>(account.credentials(), account.serviceName(), spins, std::move(start));
}

}  // namespace korvogit
