#include "KorvoGitService/RKTOperationQueue.h"

#include <mutex>
#include <utility>
#include <vector>

#include "support/RKTOperationQueueAccess.h"
#include "support/ThreadPool.h"

namespace {

using Operation = std::function<void()>;

/// The operations of one queue. Whoever comes to an idle queue occupies it; the others leave
/// theirs, for the pool to run afterwards. A strand of Asio has no way to run one in a thread that
/// is not the pool's.
class SerialOperations : public std::enable_shared_from_this<SerialOperations> {
public:
    /// Without memory nothing is changed.
    void add(Operation operation) {
        const std::lock_guard lock(mutex_);
        if (!isOccupied_) runWaitingInPool();
        isOccupied_ = true;
        waiting_.push_back(std::move(operation));
    }

    void performHereOrAdd(Operation operation) {
        {
            const std::lock_guard lock(mutex_);
            if (std::exchange(isOccupied_, true)) return waiting_.push_back(std::move(operation));
        }
        std::exchange(operation, nullptr)();  // destroyed on the queue
        goOn();
    }

private:
    void runWaitingInPool() {
        rkt::runInPool([self = shared_from_this()] { self->runWaiting(); });
    }

    void runWaiting() {
        std::vector<Operation> operations;
        {
            const std::lock_guard lock(mutex_);
            operations.swap(waiting_);
        }
        for (auto& operation : operations) std::exchange(operation, nullptr)();
        goOn();
    }

    /// Later, so that the queues of the pool take turns.
    void goOn() {
        const std::lock_guard lock(mutex_);
        isOccupied_ = !waiting_.empty();
        if (isOccupied_) runWaitingInPool();
    }

    std::mutex mutex_;
    std::vector<Operation> waiting_;
    bool isOccupied_ = false;
};

}  // namespace

struct RKTOperationQueue::Strand {
    const std::shared_ptr<SerialOperations> operations = std::make_shared<SerialOperations>();
};

RKTOperationQueue::RKTOperationQueue() : strand_(std::make_unique<Strand>()) {}
RKTOperationQueue::~RKTOperationQueue() = default;

void RKTOperationQueue::addOperation(Operation operation) {
    if (operation) strand_->operations->add(std::move(operation));
}

void RKTOperationQueueAccess::performHereOrAdd(RKTOperationQueue& queue, Operation operation) {
    const auto operations = queue.strand_->operations;  // outlives the queue, as in the pool
    operations->performHereOrAdd(std::move(operation));
}
