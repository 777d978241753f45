#include "Gate.h"

#include <utility>

namespace emulator {

void Gate::arrive(std::function<void()> resume) {
    {
        const std::lock_guard lock(mutex_);
        ++arrivals_;
        if (!open_) {
            waiting_.push_back(std::move(resume));
            resume = nullptr;
        }
    }
    arrived_.notify_all();
    if (resume) {
        resume();
    }
}

void Gate::open() {
    std::vector<std::function<void()>> waiting;
    {
        const std::lock_guard lock(mutex_);
        open_ = true;
        waiting.swap(waiting_);
    }
    for (const auto& resume : waiting) {
        resume();
    }
}

bool Gate::waitForArrivals(std::size_t count, std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, timeout, [&] { return arrivals_ >= count; });
}

std::size_t Gate::arrivals() const {
    const std::lock_guard lock(mutex_);
    return arrivals_;
}

bool Gate::isOpen() const {
    const std::lock_guard lock(mutex_);
    return open_;
}

}  // namespace emulator
