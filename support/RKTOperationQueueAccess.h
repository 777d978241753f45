// A queue's operations on a thread that has time for them.

#pragma once

#include <functional>

#include "KorvoGitService/RKTOperationQueue.h"

struct RKTOperationQueueAccess {
    /// Runs the operation inside this call when the queue has nothing else to do, and adds it
    /// otherwise. For threads that may be kept as long as a caller's code takes.
    static void performHereOrAdd(RKTOperationQueue& queue, std::function<void()> operation);
};
