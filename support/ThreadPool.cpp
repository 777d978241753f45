#include "support/ThreadPool.h"

#include <algorithm>
#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "support/SignalsBlocked.h"

namespace rkt {
namespace {

// Handlers parse and map, which is a processor's work: more threads than processors gain nothing,
// and more than four would be much to ask of an application that lists repositories now and then.
int usualThreads() {
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 2, 4);
}

constexpr int mostThreads = 64;

// While no work begins for so long though some waits, the threads are kept. Reading a page takes
// less than a hundredth of it.
constexpr std::chrono::milliseconds patience(50);

/// Never destroyed: at exit its threads may be inside a caller's code, which nobody can wait for.
class Pool {
public:
    static Pool& shared() {
        static auto& instance = []() -> Pool& {
            const SignalsBlocked blocked;  // signals are the application's
            return *new Pool;
        }();
        return instance;
    }

    void run(std::function<void()> work) {
        boost::asio::post(threads_, [this, work = std::move(work)]() mutable {
            ++begun_;
            std::exchange(work, nullptr)();
            --unfinished_;
        });
        ++unfinished_;
        if (someMayWait()) haveReserve();
    }

private:
    Pool() = default;

    bool someMayWait() const { return unfinished_ > count_; }

    void haveReserve() {
        const std::lock_guard lock(mutex_);
        if (hasReserve_) {
            wanted_.notify_one();
        } else if (count_ < mostThreads) {
            startReserve();
        }
    }

    // Where there is no room for a thread, the next work that comes tries again.
    void startReserve() {
        const SignalsBlocked blocked;
        try {
            std::thread([this] { standBy(); }).detach();
            hasReserve_ = true;
        } catch (const std::exception&) {
            hasReserve_ = false;
        }
    }

    // One thread stands by until the others are kept, and becomes one of them.
    void standBy() {
        std::unique_lock lock(mutex_);
        for (bool areKept = false; !areKept;) {
            wanted_.wait(lock, [this] { return someMayWait(); });
            const auto begun = begun_.load();
            lock.unlock();
            std::this_thread::sleep_for(patience);
            lock.lock();
            areKept = someMayWait() && begun_ == begun;
        }
        ++count_;
        hasReserve_ = false;
        if (someMayWait() && count_ < mostThreads) startReserve();
        lock.unlock();
        threads_.attach();
    }

    std::atomic<int> count_ = usualThreads();
    std::atomic<int> unfinished_ = 0;
    std::atomic<std::uint64_t> begun_ = 0;
    boost::asio::thread_pool threads_{static_cast<std::size_t>(count_.load())};

    std::mutex mutex_;
    std::condition_variable wanted_;
    bool hasReserve_ = false;
};

}  // namespace

void runInPool(std::function<void()> work) {
    Pool::shared().run(std::move(work));
}

}  // namespace rkt
