// The threads that all queues share.

#pragma once

#include <functional>

namespace rkt {

/// Runs work on one of a few threads: as many as can have a processor. Where all of them are kept,
/// as by handlers that wait for one another, another comes after a moment, up to 64, and ends when
/// it has had nothing to do for two seconds. Without memory it throws, and nothing is run.
void runInPool(std::function<void()> work);

}  // namespace rkt
