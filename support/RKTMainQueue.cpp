#include "KorvoGitService/RKTMainQueue.h"

#include <sys/eventfd.h>

#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace {

// The tasks of the library's own queue, and a descriptor that is readable exactly while there are
// some. Never destroyed, since a thread of the library may still add a task while the process
// exits.
class MainQueue {
public:
    static MainQueue& shared() {
        static auto& instance = *new MainQueue;
        return instance;
    }

    void setExecutor(RKTMainQueue::Executor executor) {
        auto replacement = executor
                               ? std::make_shared<const RKTMainQueue::Executor>(std::move(executor))
                               : nullptr;
        {
            const std::lock_guard lock(mutex_);
            executor_.swap(replacement);
            showReadable();
        }
        handOver();
    }

    void async(RKTMainQueue::Task task) {
        {
            const std::lock_guard lock(mutex_);
            tasks_.push_back(std::move(task));
            showReadable();
        }
        handOver();
    }

    std::size_t drain() {
        std::size_t count = 0;
        for (auto waiting = size(); count < waiting; ++count) {
            const auto task = takeFirst();
            if (!task) break;  // somebody else drains, too
            task();
        }
        return count;
    }

    int fileDescriptor() const { return descriptor_; }

private:
    // Gives the executor what waits. One thread does so at a time, for all others, so that the
    // tasks keep their order.
    void handOver() {
        std::unique_lock lock(mutex_);
        if (handingOver_) return;
        handingOver_ = true;
        while (executor_ && !tasks_.empty()) {
            const auto executor = executor_;
            auto task = std::move(tasks_.front());
            tasks_.pop_front();
            lock.unlock();
            (*executor)(std::move(task));
            lock.lock();
        }
        handingOver_ = false;
    }

    // What waits for an executor is not for who drains.
    std::size_t size() {
        const std::lock_guard lock(mutex_);
        return executor_ ? 0 : tasks_.size();
    }

    RKTMainQueue::Task takeFirst() {
        const std::lock_guard lock(mutex_);
        if (executor_ || tasks_.empty()) return {};
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        showReadable();
        return task;
    }

    // With the lock held; neither call blocks. Reading takes the counter back to zero.
    void showReadable() {
        const bool readable = !executor_ && !tasks_.empty();
        if (std::exchange(readable_, readable) == readable) return;
        eventfd_t counter = 0;
        static_cast<void>(readable ? eventfd_write(descriptor_, 1)
                                   : eventfd_read(descriptor_, &counter));
    }

    std::mutex mutex_;
    std::shared_ptr<const RKTMainQueue::Executor> executor_;
    std::deque<RKTMainQueue::Task> tasks_;
    bool handingOver_ = false;
    bool readable_ = false;
    const int descriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
};

}  // namespace

void RKTMainQueue::setExecutor(Executor executor) {
    MainQueue::shared().setExecutor(std::move(executor));
}

void RKTMainQueue::async(Task task) {
    if (task) MainQueue::shared().async(std::move(task));
}

std::size_t RKTMainQueue::drain() {
    return MainQueue::shared().drain();
}

int RKTMainQueue::fileDescriptor() {
    return MainQueue::shared().fileDescriptor();
}
