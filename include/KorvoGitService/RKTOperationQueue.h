// Where callers' code runs.

#ifndef KORVOGITSERVICE_RKTOPERATIONQUEUE_H
#define KORVOGITSERVICE_RKTOPERATIONQUEUE_H

#include <functional>
#include <memory>

#include "KorvoGitService/RKTExport.h"

/// A serial queue: its operations run one at a time, in order, on a few threads that all queues
/// share. A queue without work costs memory only. An operation that blocks keeps a thread; where
/// all are kept, another comes after a moment, up to 64. One that throws ends the process, as on
/// any thread.
class RKT_EXPORT RKTOperationQueue {
public:
    RKTOperationQueue();
    ~RKTOperationQueue();
    RKTOperationQueue(const RKTOperationQueue&) = delete;
    RKTOperationQueue& operator=(const RKTOperationQueue&) = delete;

    /// `addOperationWithBlock:`. Returns at once, from any thread; the operation never runs inside
    /// this call, and is destroyed on the queue after it ran. The queue object may be destroyed
    /// before its operations have run.
    void addOperation(std::function<void()> operation);

private:
    friend struct RKTOperationQueueAccess;

    struct Strand;
    std::unique_ptr<Strand> strand_;
};

#endif
