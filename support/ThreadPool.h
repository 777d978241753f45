// The threads that all queues share.

#pragma once

#include <functional>

namespace rkt {

/// Runs work on one of a few threads: as many as can have a processor. Where all of them are kept,
/// as by handlers that wait for one another, another comes after a moment, up to 64, and ends when
/// so many were not needed for two seconds. Without memory or any thread it throws, and nothing is
/// run.
void runInPool(std::function<void()> work);

/// Has at least one thread, or throws. Afterwards runInPool() throws for want of memory only.
void haveThreadInPool();

}  // namespace rkt
