// The thread of a test as the application's main thread.

#pragma once

#include <KorvoGitService/RKTMainQueue.h>
#include <poll.h>

#include <chrono>
#include <functional>

/// Runs the main queue on this thread until `done` says so, as an application's loop does. False
/// when that takes too long.
inline bool runMainQueueUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        pollfd descriptor = {RKTMainQueue::fileDescriptor(), POLLIN, 0};
        poll(&descriptor, 1, 1000);
        RKTMainQueue::drain();
    }
    return true;
}

/// Waits until something waits in the main queue, and leaves it there. False when that takes too
/// long.
inline bool waitForMainQueue() {
    pollfd descriptor = {RKTMainQueue::fileDescriptor(), POLLIN, 0};
    return poll(&descriptor, 1, 30'000) == 1;
}
