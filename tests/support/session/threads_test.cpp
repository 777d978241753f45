// Exchanges are prepared on their callers' threads, moved by the loader's, and let go of wherever
// the result is taken.

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <latch>
#include <thread>
#include <vector>

#include "support/session/Loader.h"
#include "tests/helpers/Loading.h"

namespace {

constexpr int threads = 4;

/// Calls on several threads, which begin together, and waits for all.
template <typename Call>
void onSeveralThreads(Call call) {
    std::latch ready(threads);
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&, i] {
            ready.arrive_and_wait();
            call(i);
        });
    }
}

class Threads : public testing::Test {
protected:
    Origin origin;

    Threads() { origin.server.script({}, emulator::textAnswer(200, "done")); }

    rkt::Exchange exchange(const std::shared_ptr<rkt::SessionMemory>& memory) const {
        const auto target = rkt::requestTarget(RKTURL::URLWithString(origin.url("/x")));
        return {std::get<rkt::RequestTarget>(target),
                "GET",
                {},
                {},
                std::make_shared<const RKTNetworkSettings>(origin.settings),
                std::chrono::minutes(1),
                std::chrono::steady_clock::now() + std::chrono::minutes(1),
                memory};
    }
};

TEST_F(Threads, ManyStartRequestsOfOneSessionThatSetCookies) {
    constexpr int each = 10;
    origin.server.clearScripts();
    auto answer = emulator::textAnswer(200, "done");
    answer.headers.add("Set-Cookie", "session=shared; Path=/");
    origin.server.script({}, answer);
    const auto session = origin.session();
    const auto loaded = std::make_shared<Awaited<Loaded>>();
    onSeveralThreads([&](int) {
        for (int i = 0; i < each; ++i) {
            Origin::task(*session, requestTo(origin.url("/x")), loaded)->resume();
        }
    });
    for (const auto& one : loaded->wait(threads * each)) EXPECT_EQ(one.status(), 200);

    const auto last = std::make_shared<Awaited<Loaded>>();
    Origin::task(*session, requestTo(origin.url("/x")), last)->resume();
    EXPECT_EQ(last->first().status(), 200);
    EXPECT_EQ(origin.server.requests().back().headers.get("Cookie"), "session=shared");
}

TEST_F(Threads, ASessionsMemoryGoesWithTheLastResultThatUsedIt) {
    auto hold = origin.server.hold({});
    auto memory = rkt::sharedLoader().makeSessionMemory();
    const std::weak_ptr<rkt::SessionMemory> alive = memory;
    std::promise<rkt::ExchangeResult> promise;
    rkt::sharedLoader().start(exchange(memory), [&](rkt::ExchangeResult result) {
        promise.set_value(std::move(result));
    });
    ASSERT_TRUE(hold.waitUntilReached());
    memory.reset();
    EXPECT_FALSE(alive.expired());
    hold.release();
    auto future = promise.get_future();
    ASSERT_EQ(future.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    auto result = future.get();
    EXPECT_EQ(result.status, 200);
    EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);
    EXPECT_FALSE(alive.expired());
    result = {};
    EXPECT_TRUE(alive.expired());
}

TEST_F(Threads, WhatIsCancelledRightAfterItsStartIsLetGoOfByTheLoader) {
    constexpr int each = 25;
    auto hold = origin.server.hold({});
    Awaited<int> finished;
    Awaited<int> destroyed;
    onSeveralThreads([&](int) {
        auto& loader = rkt::sharedLoader();
        const auto memory = loader.makeSessionMemory();
        for (int i = 0; i < each; ++i) {
            const std::shared_ptr<void> witness(nullptr, [&](void*) { destroyed.put(1); });
            loader.cancel(loader.start(exchange(memory), [&, witness](rkt::ExchangeResult result) {
                finished.put(result.status);
            }));
        }
    });
    EXPECT_EQ(destroyed.wait(threads * each).size(), std::size_t{threads * each});
    EXPECT_EQ(finished.count(), 0U);
    EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);
}

}  // namespace
