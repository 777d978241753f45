#include "KorvoGitService/RKTMainQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <latch>
#include <memory>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

/// Every test begins and ends with an empty queue of the library's own, which the process shares.
class MainQueue : public testing::Test {
protected:
    MainQueue() { settle(); }
    ~MainQueue() override { settle(); }

    static void settle() {
        RKTMainQueue::setExecutor({});
        while (RKTMainQueue::drain() > 0) {
        }
    }
    static bool isReadable(int milliseconds = 0) {
        pollfd descriptor = {RKTMainQueue::fileDescriptor(), POLLIN, 0};
        return poll(&descriptor, 1, milliseconds) == 1 && descriptor.revents == POLLIN;
    }
};

/// An application's own main loop, run by hand.
class Loop {
public:
    RKTMainQueue::Executor executor() {
        return [this](RKTMainQueue::Task task) {
            const std::lock_guard lock(mutex_);
            tasks_.push_back(std::move(task));
        };
    }
    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return tasks_.size();
    }
    RKTMainQueue::Task takeFirst() {
        const std::lock_guard lock(mutex_);
        auto task = std::move(tasks_.front());
        tasks_.erase(tasks_.begin());
        return task;
    }
    void run() {
        std::vector<RKTMainQueue::Task> tasks;
        {
            const std::lock_guard lock(mutex_);
            tasks.swap(tasks_);
        }
        for (const auto& task : tasks) task();
    }

private:
    std::mutex mutex_;
    std::vector<RKTMainQueue::Task> tasks_;
};

// The library's own queue

TEST_F(MainQueue, WithoutADrainNothingRuns) {
    const auto ran = std::make_shared<bool>(false);  // the task outlives the test
    RKTMainQueue::async([ran] { *ran = true; });
    EXPECT_TRUE(isReadable());
    EXPECT_FALSE(*ran);
}

TEST_F(MainQueue, DrainRunsWhatWaitsInItsOrderOnTheCallingThread) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    for (int i = 0; i < 5; ++i) {
        std::thread([&, i] {
            RKTMainQueue::async([&, i] {
                order.push_back(i);
                threads.push_back(std::this_thread::get_id());
            });
        }).join();
    }
    EXPECT_EQ(RKTMainQueue::drain(), 5U);
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4}));
    EXPECT_EQ(threads, std::vector(5, std::this_thread::get_id()));
}

TEST_F(MainQueue, DrainOfAnEmptyQueueRunsNothing) {
    EXPECT_EQ(RKTMainQueue::drain(), 0U);
}

TEST_F(MainQueue, TasksThatTasksAddWaitForTheNextDrain) {
    int ran = 0;
    RKTMainQueue::Task again = [&] {
        ++ran;
        RKTMainQueue::async(again);
    };
    RKTMainQueue::async(again);
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
    EXPECT_EQ(ran, 1);
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
    EXPECT_EQ(ran, 2);
    again = nullptr;
    RKTMainQueue::async([&] { ++ran; });
    EXPECT_EQ(RKTMainQueue::drain(), 2U);  // a copy of the task that is empty by now, and this one
}

TEST_F(MainQueue, ATaskMayDrain) {
    std::vector<int> order;
    RKTMainQueue::async([&] {
        order.push_back(1);
        EXPECT_EQ(RKTMainQueue::drain(), 1U);
        order.push_back(3);
    });
    RKTMainQueue::async([&] { order.push_back(2); });
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_F(MainQueue, ATaskIsDestroyedOnceItRan) {
    const auto token = std::make_shared<int>(1);
    RKTMainQueue::async([token] {});
    EXPECT_EQ(token.use_count(), 2);
    RKTMainQueue::drain();
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(MainQueue, ATaskOfAnExecutorLetsGoOfWhatItHoldsWhenItRan) {
    Loop loop;
    RKTMainQueue::setExecutor(loop.executor());
    auto held = std::make_shared<int>();
    const std::weak_ptr watched = held;
    RKTMainQueue::async([held = std::move(held)] {});
    auto task = loop.takeFirst();
    EXPECT_FALSE(watched.expired());
    task();
    EXPECT_TRUE(watched.expired());
}

TEST_F(MainQueue, AnEmptyTaskIsNone) {
    RKTMainQueue::async(nullptr);
    EXPECT_FALSE(isReadable());
    EXPECT_EQ(RKTMainQueue::drain(), 0U);
}

TEST_F(MainQueue, RunsEachTaskOfManyThreadsOnceWhileSeveralDrain) {
    constexpr int threadCount = 4;
    constexpr int tasksPerThread = 500;
    constexpr int all = threadCount * tasksPerThread;
    std::vector<std::atomic<int>> runs(all);
    std::atomic<int> total = 0;
    std::latch start(threadCount + 2);
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&, thread] {
                start.arrive_and_wait();
                for (int i = 0; i < tasksPerThread; ++i) {
                    RKTMainQueue::async([&, index = thread * tasksPerThread + i] {
                        ++runs[static_cast<std::size_t>(index)];
                        ++total;
                    });
                }
            });
        }
        for (int drainer = 0; drainer < 2; ++drainer) {
            threads.emplace_back([&] {
                start.arrive_and_wait();
                while (total < all) {
                    isReadable(10);
                    RKTMainQueue::drain();
                }
            });
        }
    }
    for (const auto& count : runs) EXPECT_EQ(count, 1);
    EXPECT_FALSE(isReadable());
}

// Its descriptor

TEST_F(MainQueue, TheDescriptorIsReadableExactlyWhileTasksWait) {
    EXPECT_FALSE(isReadable());
    RKTMainQueue::async([] {});
    EXPECT_TRUE(isReadable());
    RKTMainQueue::async([] {});
    EXPECT_TRUE(isReadable());
    RKTMainQueue::drain();
    EXPECT_FALSE(isReadable());
    RKTMainQueue::async([] {});
    EXPECT_TRUE(isReadable());
    RKTMainQueue::drain();
    EXPECT_FALSE(isReadable());
}

TEST_F(MainQueue, TheDescriptorIsNoLongerReadableWhileTheLastTaskRuns) {
    bool readable = true;
    RKTMainQueue::async([&] { readable = isReadable(); });
    RKTMainQueue::drain();
    EXPECT_FALSE(readable);
}

TEST_F(MainQueue, TheDescriptorWakesAWaitingLoop) {
    std::latch waiting(1);
    const std::jthread thread([&] {
        waiting.wait();
        RKTMainQueue::async([] {});
    });
    waiting.count_down();
    EXPECT_TRUE(isReadable(30'000));
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
}

TEST_F(MainQueue, TheDescriptorStaysTheSame) {
    const int descriptor = RKTMainQueue::fileDescriptor();
    EXPECT_GE(descriptor, 0);
    RKTMainQueue::async([] {});
    RKTMainQueue::drain();
    EXPECT_EQ(RKTMainQueue::fileDescriptor(), descriptor);
}

// The application's executor

// In a process of its own: the descriptor stays once there is one.
[[noreturn]] void askWithoutDescriptors() {
    RKTMainQueue::async([] {});
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none = {0, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const bool isRefused = RKTMainQueue::fileDescriptor() == -1;
    setrlimit(RLIMIT_NOFILE, &usual);
    pollfd descriptor = {RKTMainQueue::fileDescriptor(), POLLIN, 0};
    std::_Exit(isRefused && poll(&descriptor, 1, 0) == 1 ? EXIT_SUCCESS : EXIT_FAILURE);
}

TEST_F(MainQueue, AsksAgainForADescriptorThatItDidNotGet) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(askWithoutDescriptors(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(MainQueue, AnExecutorReceivesTheTasksAndTheLibrarysQueueNone) {
    Loop loop;
    RKTMainQueue::setExecutor(loop.executor());
    bool ran = false;
    RKTMainQueue::async([&] { ran = true; });
    EXPECT_FALSE(isReadable());
    EXPECT_EQ(RKTMainQueue::drain(), 0U);
    EXPECT_EQ(loop.count(), 1U);
    EXPECT_FALSE(ran);
    loop.run();
    EXPECT_TRUE(ran);
}

TEST_F(MainQueue, TasksThatWaitGoToANewExecutorInTheirOrder) {
    std::vector<int> order;
    for (int i = 0; i < 3; ++i) RKTMainQueue::async([&, i] { order.push_back(i); });
    Loop loop;
    RKTMainQueue::setExecutor(loop.executor());
    EXPECT_FALSE(isReadable());
    EXPECT_EQ(RKTMainQueue::drain(), 0U);
    EXPECT_EQ(loop.count(), 3U);
    loop.run();
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
}

TEST_F(MainQueue, ALaterExecutorTakesOverWhatComesFromThenOn) {
    Loop first;
    Loop second;
    RKTMainQueue::setExecutor(first.executor());
    RKTMainQueue::async([] {});
    RKTMainQueue::setExecutor(second.executor());
    RKTMainQueue::async([] {});
    EXPECT_EQ(first.count(), 1U);
    EXPECT_EQ(second.count(), 1U);
}

TEST_F(MainQueue, AnEmptyExecutorGivesTheWorkBackToTheLibrarysQueue) {
    Loop loop;
    RKTMainQueue::setExecutor(loop.executor());
    RKTMainQueue::setExecutor({});
    RKTMainQueue::async([] {});
    EXPECT_EQ(loop.count(), 0U);
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
}

TEST_F(MainQueue, AnExecutorIsLetGoWhenItIsReplaced) {
    const auto token = std::make_shared<int>(1);
    RKTMainQueue::setExecutor([token](const RKTMainQueue::Task&) {});
    EXPECT_EQ(token.use_count(), 2);
    RKTMainQueue::setExecutor({});
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(MainQueue, AnExecutorMayReplaceItself) {
    std::vector<RKTMainQueue::Task> received;
    RKTMainQueue::setExecutor([&](RKTMainQueue::Task task) {
        received.push_back(std::move(task));
        RKTMainQueue::setExecutor({});
    });
    RKTMainQueue::async([] {});
    RKTMainQueue::async([] {});
    EXPECT_EQ(received.size(), 1U);
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
}

TEST_F(MainQueue, AnExecutorThatReplacedItselfIsDestroyedWhereTasksMayBeAdded) {
    struct Witness {
        bool* ran;
        ~Witness() {
            RKTMainQueue::async([ran = ran] { *ran = true; });
        }
    };
    bool ran = false;
    RKTMainQueue::setExecutor([witness = std::make_shared<Witness>(&ran)](
                                  const RKTMainQueue::Task&) { RKTMainQueue::setExecutor({}); });
    RKTMainQueue::async([] {});
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
    EXPECT_TRUE(ran);
}

TEST_F(MainQueue, WhatAnExecutorUsesMayGoOnceItIsReplaced) {
    std::latch entered(1);
    std::atomic<bool> left = false;
    RKTMainQueue::setExecutor([&](const RKTMainQueue::Task&) {
        entered.count_down();
        RKTMainQueue::async([] {});  // waits, and so shows when the executor was taken away
        EXPECT_TRUE(isReadable(30'000));
        for (int i = 0; i < 1000; ++i) std::this_thread::yield();
        left = true;
    });
    const std::jthread caller([] { RKTMainQueue::async([] {}); });
    entered.wait();
    RKTMainQueue::setExecutor({});
    EXPECT_TRUE(left);
}

TEST_F(MainQueue, AnExecutorThatThrowsLosesThatTaskAlone) {
    Loop loop;
    RKTMainQueue::setExecutor(
        [](const RKTMainQueue::Task&) { throw std::runtime_error("there is no loop yet"); });
    EXPECT_THROW(RKTMainQueue::async([] {}), std::runtime_error);
    RKTMainQueue::setExecutor(loop.executor());
    RKTMainQueue::async([] {});
    EXPECT_EQ(loop.count(), 1U);
}

TEST_F(MainQueue, AnExecutorThatThrowsReceivesTheNextTasksAllTheSame) {
    for (int i = 0; i < 4; ++i) RKTMainQueue::async([] {});
    int calls = 0;
    const auto setExecutor = [&] {
        RKTMainQueue::setExecutor([&](const RKTMainQueue::Task&) {
            if (++calls % 2 != 0) throw std::runtime_error(std::to_string(calls));
        });
    };
    EXPECT_THAT(setExecutor, testing::ThrowsMessage<std::runtime_error>("1"));
    EXPECT_EQ(calls, 4);
}

TEST_F(MainQueue, AnExecutorThatThrowsMayAddItsTaskAgain) {
    int calls = 0;
    RKTMainQueue::setExecutor([&](RKTMainQueue::Task task) {
        ++calls;
        RKTMainQueue::async(std::move(task));
        throw std::runtime_error("there is no loop yet");
    });
    for (int i = 1; i <= 3; ++i) {
        EXPECT_THROW(RKTMainQueue::async([] {}), std::runtime_error);
        EXPECT_EQ(calls, i * (i + 1) / 2);  // each time those that wait, and the new one
    }
    RKTMainQueue::setExecutor({});
    EXPECT_EQ(RKTMainQueue::drain(), 3U);
}

TEST_F(MainQueue, ATaskThatComesWhileOthersAreHandedOverComesAfterThem) {
    std::vector<int> order;
    for (int i = 0; i < 3; ++i) RKTMainQueue::async([&, i] { order.push_back(i); });
    std::vector<RKTMainQueue::Task> received;
    RKTMainQueue::setExecutor([&](RKTMainQueue::Task task) {
        const bool isFirst = received.empty();
        received.push_back(std::move(task));
        if (isFirst) std::thread([&] { RKTMainQueue::async([&] { order.push_back(3); }); }).join();
    });
    for (const auto& task : received) task();
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
}

TEST_F(MainQueue, TheTasksOfAThreadKeepTheirOrderWhileAnExecutorComes) {
    constexpr int count = 200;
    for (int round = 0; round < 20; ++round) {
        std::vector<int> order;
        Loop loop;
        std::latch begun(1);
        std::jthread producer([&] {
            for (int i = 0; i < count; ++i) {
                RKTMainQueue::async([&, i] { order.push_back(i); });
                if (i == count / 4) begun.count_down();
            }
        });
        begun.wait();
        RKTMainQueue::setExecutor(loop.executor());
        producer.join();
        settle();  // the executor refers to the loop
        loop.run();
        ASSERT_EQ(order.size(), static_cast<std::size_t>(count));
        EXPECT_TRUE(std::ranges::is_sorted(order));
    }
}

TEST_F(MainQueue, NoTaskIsLostWhileExecutorsChange) {
    constexpr int count = 1000;
    std::atomic<int> ran = 0;
    Loop loop;
    std::latch start(2);
    {
        const std::jthread producer([&] {
            start.arrive_and_wait();
            for (int i = 0; i < count; ++i) RKTMainQueue::async([&] { ++ran; });
        });
        start.arrive_and_wait();
        for (int i = 0; i < 100; ++i) {
            RKTMainQueue::setExecutor(i % 2 == 0 ? loop.executor() : RKTMainQueue::Executor());
        }
    }
    settle();
    loop.run();
    EXPECT_EQ(ran, count);
}

}  // namespace
