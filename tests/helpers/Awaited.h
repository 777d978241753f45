// Waiting for something that comes from another thread.

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

/// Collects values that arrive on other threads. The longest wait is bounded, so that a test of
/// something that never comes ends; what does come is waited for no longer than it takes.
template <class T>
class Awaited {
public:
    void put(T value) {
        const std::lock_guard lock(mutex_);
        values_.push_back(std::move(value));
        arrived_.notify_all();
    }

    /// The values, once there are at least `count`.
    std::vector<T> wait(std::size_t count = 1,
                        std::chrono::seconds patience = std::chrono::seconds(30)) const {
        std::unique_lock lock(mutex_);
        if (!arrived_.wait_for(lock, patience, [&] { return values_.size() >= count; })) {
            throw std::runtime_error("what the test waits for did not come");
        }
        return values_;
    }

    /// For operations and handlers, where nothing may be thrown.
    bool comes(std::size_t count) const noexcept {
        try {
            return wait(count).size() == count;
        } catch (const std::exception&) {
            return false;
        }
    }

    T first() const { return wait().front(); }

    std::size_t count() const {
        const std::lock_guard lock(mutex_);
        return values_.size();
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::vector<T> values_;
};
