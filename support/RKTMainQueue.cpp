#include "KorvoGitService/RKTMainQueue.h"

#include <sys/eventfd.h>

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace {

// The tasks of the library's own queue, and for who asks for it a descriptor that is readable
// exactly while there are some. Never destroyed, since a thread of the library may still add a task
// while the process exits.
class MainQueue {
public:
    static MainQueue& shared() {
        static auto& instance = *new MainQueue;
        return instance;
    }

    void setExecutor(RKTMainQueue::Executor executor) {
        auto other = executor ? std::make_shared<const RKTMainQueue::Executor>(std::move(executor))
                              : nullptr;
        {
            std::unique_lock lock(mutex_);
            executor_.swap(other);
            showReadable();
            // As a std::stop_callback's destructor does: then what the former one uses may go.
            returned_.wait(lock, [&] { return !isCalledElsewhere(other.get()); });
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

    int fileDescriptor() {
        const std::lock_guard lock(mutex_);
        if (descriptor_ < 0) descriptor_ = eventfd(readable_ ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
        return descriptor_;
    }

private:
    // The executor's call with the first task, without the lock. So the executor goes without it,
    // too: where it was replaced meanwhile this is the last of it, and it owns a caller's objects.
    class Call {
    public:
        Call(MainQueue& queue, std::unique_lock<std::mutex>& lock)
            : queue_(queue),
              lock_(lock),
              executor_(queue.executor_),
              task_(std::move(queue.tasks_.front())) {
            queue_.tasks_.pop_front();
            queue_.called_ = executor_.get();
            queue_.caller_ = std::this_thread::get_id();
            lock_.unlock();
        }
        ~Call() {
            executor_.reset();
            task_ = nullptr;
            lock_.lock();
            queue_.called_ = nullptr;
            queue_.returned_.notify_all();
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

        // A loop may free its entry on the thread that made it, when that is the last to let go:
        // what the task holds is gone by then.
        void make() {
            (*executor_)([task = std::move(task_)]() mutable { std::exchange(task, nullptr)(); });
        }

    private:
        MainQueue& queue_;
        std::unique_lock<std::mutex>& lock_;
        std::shared_ptr<const RKTMainQueue::Executor> executor_;
        RKTMainQueue::Task task_;
    };

    // Gives the executor what waits. One thread does so at a time, for all others, so that the
    // tasks keep their order; an exception comes out once all have had their turn.
    void handOver() {
        std::unique_lock lock(mutex_);
        if (called_) return;
        std::vector<std::exception_ptr> thrown;  // may hold a caller's objects: kept past the lock
        for (auto most = tasks_.max_size(); executor_ && !tasks_.empty() && most > 0; --most) {
            const auto waiting = tasks_.size();
            try {
                Call(*this, lock).make();
            } catch (...) {
                // What was added meanwhile waits: an executor may have tried again.
                if (thrown.empty()) most = waiting;
                thrown.push_back(std::current_exception());
            }
        }
        lock.unlock();
        if (!thrown.empty()) std::rethrow_exception(thrown.front());
    }

    bool isCalledElsewhere(const RKTMainQueue::Executor* executor) const {
        return executor && executor == called_ && caller_ != std::this_thread::get_id();
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
        if (std::exchange(readable_, readable) == readable || descriptor_ < 0) return;
        eventfd_t counter = 0;
        static_cast<void>(readable ? eventfd_write(descriptor_, 1)
                                   : eventfd_read(descriptor_, &counter));
    }

    std::mutex mutex_;
    std::shared_ptr<const RKTMainQueue::Executor> executor_;
    std::deque<RKTMainQueue::Task> tasks_;
    const RKTMainQueue::Executor* called_ = nullptr;  // while its call lasts
    std::thread::id caller_;
    std::condition_variable returned_;
    bool readable_ = false;
    int descriptor_ = -1;  // until somebody asks for it
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
