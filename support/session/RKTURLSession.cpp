#include "KorvoGitService/RKTURLSession.h"

#include <utility>

#include "support/SharedNetworkSettings.h"
#include "support/session/SessionState.h"
#include "support/session/TaskState.h"

RKTURLSessionDelegate::~RKTURLSessionDelegate() = default;

RKTURLSessionConfiguration RKTURLSessionConfiguration::ephemeralSessionConfiguration() {
    return {RKTNetworkSettings::shared()};
}

RKTURLSessionDataTask::RKTURLSessionDataTask(std::shared_ptr<rkt::TaskState> state)
    : state_(std::move(state)) {}

RKTURLSessionDataTask::~RKTURLSessionDataTask() {
    state_->drop();
}

void RKTURLSessionDataTask::resume() {
    state_->resume();
}

void RKTURLSessionDataTask::cancel() {
    state_->cancel();
}

RKTURLSessionDataTask::State RKTURLSessionDataTask::state() const {
    return state_->state();
}

const RKTURLRequest& RKTURLSessionDataTask::originalRequest() const {
    return state_->originalRequest();
}

RKTURLSession::RKTURLSession(std::shared_ptr<rkt::SessionState> state) : state_(std::move(state)) {}

RKTURLSession::~RKTURLSession() = default;

std::shared_ptr<RKTURLSession> RKTURLSession::sessionWithConfiguration(
    RKTURLSessionConfiguration configuration, std::shared_ptr<RKTURLSessionDelegate> delegate,
    std::shared_ptr<RKTOperationQueue> delegateQueue) {
    auto settings = rkt::SharedNetworkSettings::instance().get();
    if (*settings != configuration.networkSettings) {
        settings =
            std::make_shared<const RKTNetworkSettings>(std::move(configuration.networkSettings));
    }
    if (!delegateQueue) delegateQueue = std::make_shared<RKTOperationQueue>();
    return std::shared_ptr<RKTURLSession>(new RKTURLSession(std::make_shared<rkt::SessionState>(
        std::move(settings), std::move(delegate), std::move(delegateQueue))));
}

std::shared_ptr<RKTURLSession> RKTURLSession::sharedSession() {
    // Never destroyed, so that it may be used until the process ends.
    static const auto& instance =
        *new std::shared_ptr<RKTURLSession>(new RKTURLSession(std::make_shared<rkt::SessionState>(
            nullptr, nullptr, std::make_shared<RKTOperationQueue>())));
    return instance;
}

std::shared_ptr<RKTURLSessionDataTask> RKTURLSession::dataTaskWithRequest(
    RKTURLRequest request, RKTURLSessionDataTask::CompletionHandler completionHandler) {
    const auto task = std::make_shared<rkt::TaskState>(
        std::move(request), std::move(completionHandler), state_->queue());
    task->joinSession(state_);  // before the session, and whoever ends it, can see the task
    if (!state_->add(task)) task->joinSession(nullptr);
    return std::shared_ptr<RKTURLSessionDataTask>(new RKTURLSessionDataTask(task));
}

void RKTURLSession::finishTasksAndInvalidate() {
    if (this != sharedSession().get()) state_->end(false);
}

void RKTURLSession::invalidateAndCancel() {
    if (this != sharedSession().get()) state_->end(true);
}

RKTURLSessionConfiguration RKTURLSession::configuration() const {
    return {*state_->settings()};
}

const std::shared_ptr<RKTOperationQueue>& RKTURLSession::delegateQueue() const {
    return state_->queue();
}
