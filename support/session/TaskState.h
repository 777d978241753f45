// A data task behind its public face.

#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "KorvoGitService/RKTURLSession.h"
#include "support/session/Loader.h"

namespace rkt {

class SessionState;

/// How the promises at the top of RKTURLSession.h are kept: whatever ends a task (an answer, a
/// failure, a cancellation) arrives as an operation on the session's serial queue, and complete()
/// alone, which runs only there, moves a task to Completed and calls its handler. The first such
/// operation wins; the others find the task completed. cancel() marks the task before it posts its
/// operation, so an answer that is already waiting in the queue sees the mark and stands back. The
/// mutex guards the fields below it and is never held while a caller's code runs.
class TaskState : public std::enable_shared_from_this<TaskState> {
public:
    using State = RKTURLSessionDataTask::State;
    using Handler = RKTURLSessionDataTask::CompletionHandler;

    TaskState(RKTURLRequest request, Handler handler, std::shared_ptr<RKTOperationQueue> queue);
    /// A task that joins no session, because the session was ended, is cancelled when it is
    /// resumed.
    void joinSession(std::shared_ptr<SessionState> session);

    void resume();
    void cancel();
    /// The caller let go of the task: if it was never resumed it ends here, without its handler.
    void drop();

    State state() const;
    const RKTURLRequest& originalRequest() const { return originalRequest_; }

private:
    struct Outcome {
        std::optional<std::string> data;
        std::shared_ptr<const RKTHTTPURLResponse> response;
        std::optional<RKTError> error;
    };

    void begin();
    void giveUp(State state);
    void load();
    void received(ExchangeResult result);
    void follow(const std::shared_ptr<const RKTHTTPURLResponse>& redirect,
                const std::string& location);
    void deliver(std::string body, std::shared_ptr<const RKTHTTPURLResponse> response);
    void fail(std::int64_t code);
    void post(Outcome outcome);
    void complete(Outcome outcome);

    const RKTURLRequest originalRequest_;
    const std::shared_ptr<RKTOperationQueue> queue_;

    // Set by resume() before anything is on its way, then used on the queue only.
    RKTURLRequest currentRequest_;  // after redirects
    std::shared_ptr<const RKTNetworkSettings> settings_;
    std::chrono::steady_clock::time_point deadline_;
    std::shared_ptr<SessionMemory> memory_;
    int redirects_ = 0;

    mutable std::mutex mutex_;
    State state_ = State::Suspended;
    Handler handler_;
    std::shared_ptr<SessionState> session_;  // until completed
    std::optional<Loader::Token> exchange_;
};

}  // namespace rkt
