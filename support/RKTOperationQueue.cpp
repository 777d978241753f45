#include "KorvoGitService/RKTOperationQueue.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <thread>
#include <utility>

#include "support/SignalsBlocked.h"

namespace {

// Handlers parse and map, which is a processor's work: more threads than processors gain nothing,
// and more than four would be much to ask of an application that lists repositories now and then.
unsigned poolSize() {
    return std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
}

// Never destroyed: at exit its threads may be inside a caller's code, which nobody can wait for.
boost::asio::thread_pool& pool() {
    static auto& instance = []() -> boost::asio::thread_pool& {
        const rkt::SignalsBlocked blocked;  // signals are the application's
        return *new boost::asio::thread_pool(poolSize());
    }();
    return instance;
}

}  // namespace

struct RKTOperationQueue::Strand {
    boost::asio::strand<boost::asio::thread_pool::executor_type> strand{pool().get_executor()};
};

RKTOperationQueue::RKTOperationQueue() : strand_(std::make_unique<Strand>()) {}
RKTOperationQueue::~RKTOperationQueue() = default;

void RKTOperationQueue::addOperation(std::function<void()> operation) {
    if (!operation) return;
    boost::asio::post(strand_->strand, [operation = std::move(operation)]() mutable {
        const auto running = std::move(operation);  // so that it is destroyed here
        running();
    });
}
