#include "support/session/TaskState.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "support/RKTOperationQueueAccess.h"
#include "support/RequestTarget.h"
#include "support/session/ContentDecoder.h"
#include "support/session/Redirect.h"
#include "support/session/RequestHeaders.h"
#include "support/session/SessionState.h"
#include "support/session/TransportError.h"

namespace rkt {
namespace {

std::int64_t errorCode(TargetProblem problem) {
    return problem == TargetProblem::UnsupportedURL ? RKTError::NSURLErrorUnsupportedURL
                                                    : RKTError::NSURLErrorBadURL;
}

std::int64_t errorCode(DecodingProblem problem) {
    switch (problem) {
        case DecodingProblem::UnknownEncoding:
            return RKTError::NSURLErrorCannotDecodeContentData;
        case DecodingProblem::TooLarge:
            return RKTError::NSURLErrorDataLengthExceedsMaximum;
        case DecodingProblem::Damaged:
            break;
    }
    return RKTError::NSURLErrorCannotDecodeRawData;
}

// So that no settings make the sums of times overflow.
std::chrono::milliseconds bounded(std::chrono::milliseconds timeout) {
    return std::clamp<std::chrono::milliseconds>(timeout, std::chrono::milliseconds(1),
                                                 std::chrono::years(10));
}

}  // namespace

TaskState::TaskState(RKTURLRequest request, Handler handler,
                     std::shared_ptr<RKTOperationQueue> queue)
    : originalRequest_(std::move(request)),
      queue_(std::move(queue)),
      currentRequest_(originalRequest_),
      handler_(std::move(handler)) {}

void TaskState::joinSession(std::shared_ptr<SessionState> session) {
    const std::lock_guard lock(mutex_);
    session_ = std::move(session);
}

void TaskState::resume() {
    {
        const std::lock_guard lock(mutex_);
        if (state_ != State::Suspended) return;
        state_ = State::Running;
    }
    try {
        begin();
    } catch (...) {  // no memory, or no thread to be had
        giveUp(State::Running);
        throw;
    }
}

void TaskState::begin() {
    {
        const std::lock_guard lock(mutex_);
        if (session_) {
            settings_ = session_->settings();
            memory_ = session_->memory();
        }
    }
    if (!settings_) return cancel();
    deadline_ = std::chrono::steady_clock::now() + bounded(settings_->timeoutIntervalForResource);
    load();
}

// Called by begin(), and on the queue for every redirect.
void TaskState::load() {
    auto target = requestTarget(currentRequest_.URL());
    if (const auto* problem = std::get_if<TargetProblem>(&target)) return fail(errorCode(*problem));
    if (!canBeSent(currentRequest_)) return fail(RKTError::NSURLErrorBadURL);

    Exchange exchange{std::get<RequestTarget>(std::move(target)),
                      currentRequest_.HTTPMethod(),
                      headersToSend(currentRequest_),
                      currentRequest_.HTTPBody(),
                      settings_,
                      bounded(settings_->timeoutIntervalForRequest),
                      deadline_,
                      memory_};
    const std::lock_guard lock(
        mutex_);  // so that cancel() finds the exchange either not started or known
    if (state_ != State::Running) return;
    exchange_ = sharedLoader().start(
        std::move(exchange), [self = shared_from_this()](ExchangeResult result, Loader::Stay stay) {
            auto operation = [self, result = std::move(result)]() mutable {
                self->received(std::move(result));
            };
            if (stay == Loader::Stay::Long) {
                RKTOperationQueueAccess::performHereOrAdd(*self->queue_, std::move(operation));
            } else {
                self->queue_->addOperation(std::move(operation));
            }
        });
}

void TaskState::received(ExchangeResult result) {
    if (state() != State::Running) return;  // cancelled meanwhile: that operation is on its way
    std::shared_ptr<const RKTHTTPURLResponse> response;
    if (result.status != 0) {
        response = std::make_shared<const RKTHTTPURLResponse>(currentRequest_.URL(), result.status,
                                                              result.headers.fields());
    }
    if (!result.failure && !response) return fail(RKTError::NSURLErrorBadServerResponse);
    if (result.failure) {
        return complete(
            {std::nullopt, response, transportError(*result.failure, currentRequest_.URL())});
    }
    if (isRedirect(response->statusCode())) {
        if (const auto location = response->valueForHTTPHeaderField("Location"))
            return follow(response, *location);
    }
    deliver(std::move(result.body), std::move(response));
}

void TaskState::follow(const std::shared_ptr<const RKTHTTPURLResponse>& redirect,
                       const std::string& location) {
    auto next = requestAfterRedirect(currentRequest_, redirect->statusCode(), location);
    auto* request = std::get_if<RKTURLRequest>(&next);
    if (request && ++redirects_ <= maximumRedirects) {
        currentRequest_ = std::move(*request);
        return load();
    }
    const std::int64_t code =
        request ? RKTError::NSURLErrorHTTPTooManyRedirects : std::get<RKTError::URLCode>(next);
    complete({std::nullopt, redirect, transportError(code, currentRequest_.URL())});
}

void TaskState::deliver(std::string body, std::shared_ptr<const RKTHTTPURLResponse> response) {
    if (const auto encoding = response->valueForHTTPHeaderField("Content-Encoding")) {
        if (const auto problem = decodeContent(body, *encoding, settings_->maximumBodySize)) {
            return complete({std::nullopt, response,
                             transportError(errorCode(*problem), currentRequest_.URL())});
        }
    }
    complete({std::move(body), std::move(response), std::nullopt});
}

// The message goes first: where there is no room for it, nothing has changed. complete() waits for
// the lock and sees the mark.
void TaskState::cancel() {
    const std::lock_guard lock(mutex_);
    if (state_ == State::Canceling || state_ == State::Completed) return;
    post({});
    state_ = State::Canceling;
    if (exchange_) sharedLoader().cancel(*exchange_);
}

void TaskState::fail(std::int64_t code) {
    post({std::nullopt, nullptr, transportError(code, currentRequest_.URL())});
}

void TaskState::post(Outcome outcome) {
    queue_->addOperation([self = shared_from_this(), outcome = std::move(outcome)]() mutable {
        self->complete(std::move(outcome));
    });
}

void TaskState::complete(Outcome outcome) {
    Handler handler;
    std::shared_ptr<SessionState> session;
    {
        const std::lock_guard lock(mutex_);
        if (state_ == State::Completed) return;
        if (state_ == State::Canceling) {
            outcome = {std::nullopt, nullptr,
                       transportError(RKTError::NSURLErrorCancelled, originalRequest_.URL())};
        }
        state_ = State::Completed;
        handler = std::move(handler_);
        session = std::move(session_);
    }
    if (session) session->remove(*this);
    if (handler)
        handler(std::move(outcome.data), std::move(outcome.response), std::move(outcome.error));
}

void TaskState::drop() {
    giveUp(State::Suspended);
}

// Without a call of the handler, from that state.
void TaskState::giveUp(State state) {
    Handler handler;  // destroyed after the lock is released: it owns a caller's objects
    std::shared_ptr<SessionState> session;
    {
        const std::lock_guard lock(mutex_);
        if (state_ != state) return;
        state_ = State::Completed;
        handler = std::move(handler_);
        session = std::move(session_);
    }
    if (session) session->remove(*this);
}

TaskState::State TaskState::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

}  // namespace rkt
