// Loading URLs.
//
// The contract of completion, which everything above relies on:
//
// 1. A task that was resumed or cancelled runs its handler exactly once: after success, failure,
//    cancellation before, during or after the transfer, or the end of its session. A task that is
//    dropped before either never runs it.
// 2. The handler runs on the session's serial delegate queue, never inside the call that started or
//    cancelled the task, and with no lock held. From inside it the caller may cancel, invalidate,
//    start work, or drop the last reference to anything.
// 3. Whoever comes first decides: cancel() called before the handler was begun gives
//    NSURLErrorCancelled, even when the answer had already arrived; afterwards it does nothing.
// 4. The handler is moved out of the task before it is called, and destroyed on the queue right
//    after.
// 5. cancel() and resume() never block and may come from any thread.

#ifndef KORVOGITSERVICE_RKTURLSESSION_H
#define KORVOGITSERVICE_RKTURLSESSION_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTHTTPURLResponse.h"
#include "KorvoGitService/RKTNetworkSettings.h"
#include "KorvoGitService/RKTOperationQueue.h"
#include "KorvoGitService/RKTURLRequest.h"

/// What a session holds on to until it has ended. It has no operations: every event gets the
/// default handling, authentication challenges included (they are answered with nothing).
class RKT_EXPORT RKTURLSessionDelegate {
public:
    virtual ~RKTURLSessionDelegate();

protected:
    RKTURLSessionDelegate() = default;
    RKTURLSessionDelegate(const RKTURLSessionDelegate&) = default;
    RKTURLSessionDelegate& operator=(const RKTURLSessionDelegate&) = default;
};

/// A session's settings before it is made: a plain value.
struct RKT_EXPORT RKTURLSessionConfiguration {
    /// Of this session alone, but for the two numbers of connections, which are the process's.
    RKTNetworkSettings networkSettings;

    /// `ephemeralSessionConfiguration`: the shared network settings; cookies and TLS
    /// sessions in memory, per session; no cache, no stored credentials.
    static RKTURLSessionConfiguration ephemeralSessionConfiguration();
};

namespace rkt {
class SessionState;
class TaskState;
}  // namespace rkt

/// One request and its answer. A task keeps itself alive from resume() until its handler has run.
class RKT_EXPORT RKTURLSessionDataTask {
public:
    /// `dataTaskWithRequest:completionHandler:`'s handler. On success `data` is the decoded body
    /// (perhaps empty) and there is a response, whatever its status; on failure there is an error,
    /// no data, and the response if its headers had arrived. The arguments are the handler's own.
    using CompletionHandler = std::function<void(std::optional<std::string> data,
                                                 std::shared_ptr<const RKTHTTPURLResponse> response,
                                                 std::optional<RKTError> error)>;

    /// A task goes through them in this order; it may leave some out.
    enum class State {
        Suspended,  ///< made, not yet resumed
        Running,    ///< resumed; the answer may have arrived, the handler has not begun
        Canceling,  ///< cancelled; the handler has not begun
        Completed   ///< the handler has begun
    };

    ~RKTURLSessionDataTask();
    RKTURLSessionDataTask(const RKTURLSessionDataTask&) = delete;
    RKTURLSessionDataTask& operator=(const RKTURLSessionDataTask&) = delete;

    /// Starts a suspended task; otherwise does nothing. Where there is no memory, or no thread to
    /// be had for the first request of all, it throws a std::exception; the task then ends without
    /// its handler.
    void resume();
    /// Ends a task, a suspended one too, with NSURLErrorCancelled. Where it throws as resume()
    /// does, nothing has changed.
    void cancel();
    /// As it is at this moment: another thread may change it meanwhile.
    State state() const;
    /// As it was given, whatever redirects followed. Lives as long as the task.
    const RKTURLRequest& originalRequest() const;

private:
    friend class RKTURLSession;
    explicit RKTURLSessionDataTask(std::shared_ptr<rkt::TaskState> state);
    std::shared_ptr<rkt::TaskState> state_;
};

/// Tasks with common settings, cookies and TLS sessions, and one serial queue for their handlers.
/// Connections are shared with all sessions of the process that have the same network settings.
///
/// Limits: 20 redirects of a task (NSURLErrorHTTPTooManyRedirects past it), 256 KiB of header lines
/// of an answer, interim ones and trailers included (NSURLErrorBadServerResponse), and the
/// settings' maximumBodySize (NSURLErrorDataLengthExceedsMaximum).
///
/// A session holds its delegate strongly until it was ended and its last task is done: end every
/// session that has one with one of the two operations below.
class RKT_EXPORT RKTURLSession {
public:
    /// `sessionWithConfiguration:delegate:delegateQueue:`. Without a queue the session makes its
    /// own.
    static std::shared_ptr<RKTURLSession> sessionWithConfiguration(
        RKTURLSessionConfiguration configuration,
        std::shared_ptr<RKTURLSessionDelegate> delegate = nullptr,
        std::shared_ptr<RKTOperationQueue> delegateQueue = nullptr);

    /// `sharedSession`: one for the process, with cookies and TLS sessions of its own. It follows
    /// the shared network settings and cannot be ended.
    static std::shared_ptr<RKTURLSession> sharedSession();

    ~RKTURLSession();
    RKTURLSession(const RKTURLSession&) = delete;
    RKTURLSession& operator=(const RKTURLSession&) = delete;

    /// `dataTaskWithRequest:completionHandler:`. The task is suspended. On a session that was ended
    /// it gets NSURLErrorCancelled by its handler once it is resumed. An empty handler is allowed.
    std::shared_ptr<RKTURLSessionDataTask> dataTaskWithRequest(
        RKTURLRequest request, RKTURLSessionDataTask::CompletionHandler completionHandler);

    /// No new tasks; those that were made may finish; then the delegate is let go, on the queue.
    void finishTasksAndInvalidate();
    /// The same, and cancels what was made. Where either throws as a task's resume() does, what is
    /// left to do is done by the next call.
    void invalidateAndCancel();

    /// A copy of what the session was made with.
    RKTURLSessionConfiguration configuration() const;
    /// Where the handlers run; never null.
    const std::shared_ptr<RKTOperationQueue>& delegateQueue() const;

private:
    explicit RKTURLSession(std::shared_ptr<rkt::SessionState> state);
    std::shared_ptr<rkt::SessionState> state_;
};

#endif
