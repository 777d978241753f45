#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <vector>

namespace emulator {

/// Where answers wait until a test lets them go. Opening is for good. Safe from any thread.
class Gate {
public:
    /// Called by whoever wants to pass. `resume` runs once: here and now when the gate is open,
    /// else in the thread that opens it. It must not block.
    void arrive(std::function<void()> resume);
    /// Lets everyone pass, now and later.
    void open();
    /// Waits until so many have arrived, open or not; false when the time is over first.
    bool waitForArrivals(std::size_t count, std::chrono::milliseconds timeout);
    std::size_t arrivals() const;
    bool isOpen() const;

private:
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::function<void()>> waiting_;
    std::size_t arrivals_ = 0;
    bool open_ = false;
};

}  // namespace emulator
