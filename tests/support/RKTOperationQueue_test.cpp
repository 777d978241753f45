#include <KorvoGitService/RKTOperationQueue.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <latch>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/RKTOperationQueueAccess.h"
#include "tests/helpers/Awaited.h"
#include "tests/helpers/Loading.h"

namespace {

using Thread = std::thread::id;

void performHereOrAdd(RKTOperationQueue& queue, std::function<void()> operation) {
    RKTOperationQueueAccess::performHereOrAdd(queue, std::move(operation));
}

TEST(OperationQueue, RunsOperationsOneAtATimeInTheirOrder) {
    RKTOperationQueue queue;
    constexpr int each = 200;
    std::vector<std::pair<int, int>> ran;  // which thread's, which of them; the queue's own
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < each; ++i) {
                const auto operation = [&, thread, i] { ran.emplace_back(thread, i); };
                if (i % 2 == 0) {
                    queue.addOperation(operation);
                } else {
                    performHereOrAdd(queue, operation);
                }
            }
        });
    }
    threads.clear();
    drain(queue);
    EXPECT_EQ(ran.size(), std::size_t{4 * each});
    int next[4] = {};
    for (const auto& [thread, i] : ran) EXPECT_EQ(i, next[thread]++);
}

TEST(OperationQueue, WhatIsAddedNeverRunsInsideTheCall) {
    RKTOperationQueue queue;
    Awaited<Thread> ran;
    queue.addOperation([&] { ran.put(std::this_thread::get_id()); });
    EXPECT_NE(ran.first(), std::this_thread::get_id());
}

TEST(OperationQueue, AnIdleOneRunsAnOperationInTheThreadThatOffersItself) {
    RKTOperationQueue queue;
    Thread ran;
    performHereOrAdd(queue, [&] { ran = std::this_thread::get_id(); });
    EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST(OperationQueue, ABusyOneRunsItLater) {
    RKTOperationQueue queue;
    std::latch free(1);
    Awaited<Thread> ran;
    queue.addOperation([&] { free.wait(); });
    performHereOrAdd(queue, [&] { ran.put(std::this_thread::get_id()); });
    EXPECT_EQ(ran.count(), 0U);
    free.count_down();
    EXPECT_NE(ran.first(), std::this_thread::get_id());
}

TEST(OperationQueue, WhatCameMeanwhileRunsAfterwardsElsewhere) {
    RKTOperationQueue queue;
    Awaited<Thread> ran;
    performHereOrAdd(queue, [&] {
        queue.addOperation([&] { ran.put(std::this_thread::get_id()); });
        performHereOrAdd(queue, [&] { ran.put(std::this_thread::get_id()); });
        EXPECT_EQ(ran.count(), 0U);
    });
    for (const auto thread : ran.wait(2)) EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(OperationQueue, AnOperationIsGoneBeforeTheNextRuns) {
    RKTOperationQueue queue;
    Awaited<bool> gone;
    const auto checkAfter = [&](auto run) {
        auto witness = std::make_shared<int>();
        const std::weak_ptr<int> alive = witness;
        run([&queue, &gone, alive, witness = std::move(witness)] {
            queue.addOperation([&gone, alive] { gone.put(alive.expired()); });
        });
    };
    checkAfter([&](auto operation) { performHereOrAdd(queue, std::move(operation)); });
    checkAfter([&](auto operation) { queue.addOperation(std::move(operation)); });
    for (const bool one : gone.wait(2)) EXPECT_TRUE(one);
}

TEST(OperationQueue, ManyOperationsMayWaitForOneAnother) {
    constexpr std::size_t many = 30;
    std::vector<RKTOperationQueue> queues(many);
    Awaited<int> begun;
    Awaited<bool> met;
    for (auto& queue : queues) {
        queue.addOperation([&] {
            begun.put(1);
            met.put(begun.comes(many));
        });
    }
    EXPECT_THAT(met.wait(many), testing::Each(true));
}

bool isAlive(pid_t thread) {
    return std::filesystem::exists("/proc/self/task/" + std::to_string(thread));
}

TEST(OperationQueue, ThreadsThatCameForKeptOnesEndWhenTheyAreNotNeeded) {
    constexpr std::size_t many = 12;
    constexpr std::ptrdiff_t usual = 4;
    std::vector<RKTOperationQueue> queues(many);
    Awaited<pid_t> threads;
    for (auto& queue : queues) {
        queue.addOperation([&] {
            threads.put(gettid());
            threads.comes(many);
        });
    }
    const auto began = threads.wait(many);
    for (auto& queue : queues) drain(queue);
    EXPECT_THAT(std::set(began.begin(), began.end()), testing::SizeIs(many));
    const auto living = [&] { return std::ranges::count_if(began, isAlive); };
    // A little to do now and then keeps none of them, though each may get some of it. Nobody is
    // told of the end of a detached thread, so the kernel's list is looked at, for thirty seconds
    // at most.
    for (int look = 0; look < 3000 && living() > usual; ++look) {
        drain(queues.front());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_LE(living(), usual);
}

TEST(OperationQueue, MayBeDestroyedInAnOperation) {
    auto queue = std::make_shared<RKTOperationQueue>();
    Awaited<bool> ran;
    performHereOrAdd(*queue, [&] {
        queue->addOperation([&] { ran.put(true); });
        queue.reset();
    });
    EXPECT_TRUE(ran.first());
}

}  // namespace
