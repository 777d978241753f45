#include "support/ThreadPool.h"

#include <openssl/crypto.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "support/SignalsBlocked.h"

namespace rkt {
namespace {

using Clock = std::chrono::steady_clock;

// Handlers parse and map, which is a processor's work: more threads than processors gain nothing,
// and more than four would be much to ask of an application that lists repositories now and then.
int usualThreads() {
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 2, 4);
}

constexpr int mostThreads = 64;

// While no work begins for so long though some waits, the threads are kept. Reading a page takes
// less than a hundredth of it.
constexpr std::chrono::milliseconds patience(50);

// When not all threads had work at once for so long, those beyond the usual ones end: what each
// keeps, such as a decompressor, is given back.
constexpr std::chrono::seconds idleTime(2);

/// Never destroyed: at exit its threads may be inside a caller's code, which nobody can wait for.
class Pool {
public:
    static Pool& shared() {
        static auto& instance = *new Pool;
        return instance;
    }

    void run(std::function<void()> work) {
        haveThreads(usual_);
        boost::asio::post(queue_, [this, work = std::move(work)]() mutable {
            ++begun_;
            std::exchange(work, nullptr)();
            noteNeed();
            --unfinished_;
        });
        ++unfinished_;
        noteNeed();
        if (someMayWait()) haveReserve();
    }

    // One is enough to go on with; the next work tries to have the others.
    void haveThreads(int wanted) {
        if (count_ >= wanted) return;
        const std::lock_guard lock(mutex_);
        while (count_ < wanted && start([this] { queue_.run(); })) ++count_;
        if (count_ == 0) {
            throw std::system_error(std::make_error_code(std::errc::not_enough_memory));
        }
    }

private:
    // OpenSSL's own clean-up at exit is set up first, so it comes after.
    Pool() {
        OPENSSL_init_crypto(0, nullptr);
        std::atexit([] { shared().keepThreads(); });
    }

    // In a forked child nobody may be left to release the lock.
    void keepThreads() {
        if (getpid() != process_) return;
        const std::lock_guard lock(mutex_);
        exits_ = true;
    }

    // False where there is no room for a thread.
    static bool start(std::function<void()> body) {
        const SignalsBlocked blocked;  // signals are the application's
        try {
            std::thread(std::move(body)).detach();
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }

    bool someMayWait() const { return unfinished_ > count_; }

    void noteNeed() {
        if (unfinished_ >= count_) lastFull_ = Clock::now().time_since_epoch();
    }

    void haveReserve() {
        const std::lock_guard lock(mutex_);
        if (hasReserve_) {
            wanted_.notify_one();
        } else if (count_ < mostThreads) {
            hasReserve_ = start([this] { beReserve(); });
        }
    }

    // One thread stands by until the others are kept, and becomes one of them for a while.
    void beReserve() {
        if (!othersAreKept()) return;
        if (someMayWait()) haveReserve();
        do {
            queue_.run_one_for(idleTime);
        } while (!leaves());
        if (someMayWait()) haveReserve();
    }

    // The usual number stays, even when some of these came as reserves. What OpenSSL keeps for a
    // thread that a handler used it on would be freed when the thread has ended, which may be
    // beside OpenSSL's own clean-up while the process exits; so it is freed here.
    bool leaves() {
        const std::lock_guard lock(mutex_);
        const bool isNeeded = Clock::now().time_since_epoch() - lastFull_.load() < idleTime;
        if (isNeeded || exits_ || count_ <= usual_) return false;
        OPENSSL_thread_stop();
        --count_;
        return true;
    }

    bool othersAreKept() {
        std::unique_lock lock(mutex_);
        bool areKept = false;
        while (!areKept && wanted_.wait_for(lock, idleTime, [this] { return someMayWait(); })) {
            const auto begun = begun_.load();
            lock.unlock();
            std::this_thread::sleep_for(patience);
            lock.lock();
            areKept = someMayWait() && begun_ == begun;
        }
        if (areKept) ++count_;
        hasReserve_ = false;
        return areKept;
    }

    boost::asio::io_context queue_;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> isOpen_ =
        boost::asio::make_work_guard(queue_);
    const int usual_ = usualThreads();
    const pid_t process_ = getpid();
    std::atomic<int> count_ = 0;
    std::atomic<int> unfinished_ = 0;
    std::atomic<std::uint64_t> begun_ = 0;
    std::atomic<Clock::duration> lastFull_{};

    std::mutex mutex_;
    std::condition_variable wanted_;
    bool hasReserve_ = false;
    bool exits_ = false;
};

}  // namespace

void runInPool(std::function<void()> work) {
    Pool::shared().run(std::move(work));
}

void haveThreadInPool() {
    Pool::shared().haveThreads(1);
}

}  // namespace rkt
