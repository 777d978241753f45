#include "support/Idle.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr auto any = [](const auto&) { return true; };

TEST(Idle, HasNothingUntilSomethingIsGiven) {
    rkt::Idle<int> idle(2);
    EXPECT_FALSE(idle.take(any));
}

TEST(Idle, TheLastGivenIsTakenFirst) {
    rkt::Idle<int> idle(3);
    for (const int number : {1, 2, 3}) idle.give(number);
    EXPECT_EQ(idle.take(any), 3);
    EXPECT_EQ(idle.take(any), 2);
    idle.give(4);
    EXPECT_EQ(idle.take(any), 4);
    EXPECT_EQ(idle.take(any), 1);
    EXPECT_FALSE(idle.take(any));
}

TEST(Idle, OnlyWhatSuitsIsTaken) {
    rkt::Idle<int> idle(3);
    for (const int number : {1, 2, 3}) idle.give(number);
    const auto isEven = [](int number) { return number % 2 == 0; };
    EXPECT_EQ(idle.take(isEven), 2);
    EXPECT_FALSE(idle.take(isEven));
    EXPECT_EQ(idle.take(any), 3);
    EXPECT_EQ(idle.take(any), 1);
}

TEST(Idle, TheOneThatHasWaitedLongestIsDestroyedForOneTooMany) {
    rkt::Idle<std::shared_ptr<int>> idle(2);
    const auto first = std::make_shared<int>(1);
    const auto second = std::make_shared<int>(2);
    const auto third = std::make_shared<int>(3);
    for (const auto& thing : {first, second, third}) idle.give(thing);
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_EQ(idle.take(any), third);
    EXPECT_EQ(idle.take(any), second);
    EXPECT_FALSE(idle.take(any));
}

TEST(Idle, NoThingIsTakenByTwoThreads) {
    constexpr std::size_t things = 4;
    constexpr int threadCount = 6;
    rkt::Idle<std::unique_ptr<std::atomic<int>>> idle(things);
    for (std::size_t i = 0; i < things; ++i) idle.give(std::make_unique<std::atomic<int>>(0));
    std::atomic<int> usedByTwo = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 2000; ++round) {
                auto taken = idle.take(any);
                if (!taken) continue;
                usedByTwo += (*taken)->fetch_add(1);
                (*taken)->fetch_sub(1);
                idle.give(std::move(*taken));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(usedByTwo, 0);
    for (std::size_t i = 0; i < things; ++i) EXPECT_TRUE(idle.take(any));
    EXPECT_FALSE(idle.take(any));
}

}  // namespace
