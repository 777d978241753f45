// The library's threads run only when there is something to do: an application sits idle for days,
// perhaps on a battery.

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <memory>
#include <thread>

#include "tests/reliability/Faults.h"
#include "tests/reliability/Operations.h"

namespace {

using emulator::HoldStage;
using Seconds = std::chrono::duration<double>;

/// Of the whole process.
Seconds processorTime() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return Seconds(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9);
}

/// A thread that looks again and again without a pause takes all the time that it gets, which is
/// most of it on any machine; one that sleeps takes none.
void expectRest() {
    constexpr Seconds whileNothingHappens(0.6);
    const auto before = processorTime();
    std::this_thread::sleep_for(whileNothingHappens);
    EXPECT_LT((processorTime() - before).count(), 0.1);
}

TEST(Rest, FollowsAnAnswer) {
    Scene scene;
    const Asker asker(Operation::List);
    EXPECT_EQ(asker.ask(), std::nullopt);
    expectRest();
}

TEST(Rest, IsKeptWhileAServerTakesItsTime) {
    Scene scene;
    const Asker asker(Operation::List);
    for (const auto stage : {HoldStage::BeforeHeaders, HoldStage::InBody}) {
        auto hold = scene.server.hold({}, stage);
        const auto calls = std::make_shared<Asker::Calls>();
        const auto task = asker.start(calls);
        ASSERT_TRUE(hold.waitUntilReached());
        expectRest();
        hold.release();
        EXPECT_EQ(asker.outcome(*task, calls), std::nullopt);
    }
}

TEST(Rest, FollowsACancellation) {
    Scene scene;
    const Asker asker(Operation::List);
    auto hold = scene.server.hold({}, HoldStage::InBody);
    const auto calls = std::make_shared<Asker::Calls>();
    const auto task = asker.start(calls);
    ASSERT_TRUE(hold.waitUntilReached());
    task->cancel();
    EXPECT_EQ(codeOf(asker.outcome(*task, calls)), RKTError::NSURLErrorCancelled);
    expectRest();
}

}  // namespace
