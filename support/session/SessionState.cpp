#include "support/session/SessionState.h"

#include <utility>

#include "support/SharedNetworkSettings.h"
#include "support/session/TaskState.h"

namespace rkt {

SessionState::SessionState(std::shared_ptr<const RKTNetworkSettings> settings,
                           std::shared_ptr<RKTURLSessionDelegate> delegate,
                           std::shared_ptr<RKTOperationQueue> queue)
    : settings_(std::move(settings)), queue_(std::move(queue)), delegate_(std::move(delegate)) {}

std::shared_ptr<const RKTNetworkSettings> SessionState::settings() const {
    return settings_ ? settings_ : SharedNetworkSettings::instance().get();
}

std::shared_ptr<SessionMemory> SessionState::memory() {
    const std::lock_guard lock(mutex_);
    if (!memory_) memory_ = sharedLoader().makeSessionMemory();
    return memory_;
}

bool SessionState::add(const std::shared_ptr<TaskState>& task) {
    const std::lock_guard lock(mutex_);
    if (ended_) return false;
    tasks_.emplace(task.get(), task);
    return true;
}

void SessionState::remove(const TaskState& task) {
    std::shared_ptr<RKTURLSessionDelegate> delegate;
    {
        const std::lock_guard lock(mutex_);
        tasks_.erase(&task);
        if (ended_ && tasks_.empty()) delegate = std::move(delegate_);
    }
    letGoOfDelegate(std::move(delegate));
}

void SessionState::end(bool cancelTasks) {
    Tasks tasks;
    std::shared_ptr<RKTURLSessionDelegate> delegate;
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        if (tasks_.empty()) delegate = std::move(delegate_);
        if (cancelTasks) tasks = tasks_;
    }
    for (const auto& entry : tasks) {
        if (const auto task = entry.second.lock()) task->cancel();
    }
    letGoOfDelegate(std::move(delegate));
}

// On the queue, behind the handlers that are on their way: a delegate is never destroyed inside a
// call of its own. Where the queue has no room it stays, for the next call that ends the session.
void SessionState::letGoOfDelegate(std::shared_ptr<RKTURLSessionDelegate> delegate) {
    if (!delegate) return;
    const auto held = std::make_shared<std::shared_ptr<RKTURLSessionDelegate>>(std::move(delegate));
    try {
        queue_->addOperation([held] { held->reset(); });
    } catch (...) {
        const std::lock_guard lock(mutex_);
        delegate_ = std::move(*held);
        throw;
    }
}

}  // namespace rkt
