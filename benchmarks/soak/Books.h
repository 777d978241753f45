// What was started and what came of it.

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

namespace soak {

/// How an operation ended.
enum class Outcome { Succeeded, Failed, Cancelled };

/// Counts operations in and out. Safe from any thread.
class Books {
public:
    struct Balance {
        std::uint64_t started = 0;
        std::uint64_t completed = 0;
        std::uint64_t succeeded = 0;
        std::uint64_t failed = 0;
        std::uint64_t cancelled = 0;
        std::uint64_t doubled = 0;  ///< completions after the first
        std::uint64_t dropped = 0;  ///< handlers that went without having run

        std::uint64_t inFlight() const { return started - completed; }
        bool isEven() const { return inFlight() == 0 && doubled == 0 && dropped == 0; }
    };

    /// One operation; its handler holds it.
    class Entry {
    public:
        explicit Entry(Books& books) : books_(books) {}
        ~Entry() { books_.close(completions_ == 0); }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        void complete(Outcome outcome) { books_.enter(outcome, ++completions_ == 1); }

    private:
        Books& books_;
        std::atomic<int> completions_ = 0;
    };

    /// @return  what the operation's handler tells of its completion
    std::shared_ptr<Entry> start();
    Balance balance() const;

    /// Waits until fewer than so many operations are under way; false when that takes longer.
    bool waitForFewerThan(std::uint64_t inFlight, std::chrono::milliseconds patience) const;

private:
    void enter(Outcome outcome, bool isFirst);
    void close(bool unheard);

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Balance balance_;
};

}  // namespace soak
