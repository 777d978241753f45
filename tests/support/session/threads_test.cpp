// Exchanges are prepared on their callers' threads, moved by the loader's, and let go of wherever
// the result is taken. Handlers may keep the thread that received the answer: nobody else's waits.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <thread>
#include <vector>

#include "support/session/Loader.h"
#include "tests/helpers/Loading.h"

namespace {

using Thread = std::thread::id;

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
    rkt::sharedLoader().start(exchange(memory), [&](rkt::ExchangeResult result, rkt::Loader::Stay) {
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
            loader.cancel(loader.start(exchange(memory),
                                       [&, witness](rkt::ExchangeResult result, rkt::Loader::Stay) {
                                           finished.put(result.status);
                                       }));
        }
    });
    EXPECT_EQ(destroyed.wait(threads * each).size(), std::size_t{threads * each});
    EXPECT_EQ(finished.count(), 0U);
    EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);
}

// Kept threads
// ----------------------------------------------------------------------------------------------------

class KeptLoader : public Threads {
protected:
    using Stay = rkt::Loader::Stay;

    Thread threadOfNext() {
        const auto thread = std::make_shared<Awaited<Thread>>();
        rkt::sharedLoader().start(exchange(memory_), [thread](rkt::ExchangeResult, Stay) {
            thread->put(std::this_thread::get_id());
        });
        return thread->first();
    }
    /// What the next result is told. With Stay::Long it stays until `end`.
    Stay stayOfNext(std::latch* end = nullptr) {
        const auto told = std::make_shared<Awaited<Stay>>();
        rkt::sharedLoader().start(exchange(memory_), [told, end](rkt::ExchangeResult, Stay stay) {
            told->put(stay);
            if (end && stay == Stay::Long) end->wait();
        });
        return told->first();
    }
    /// A thread that was kept just before may not be back yet.
    bool maySoonStay(std::latch* end = nullptr) {
        for (int i = 0; i < 1000; ++i) {
            if (stayOfNext(end) == Stay::Long) return true;
        }
        return false;
    }

private:
    const std::shared_ptr<rkt::SessionMemory> memory_ = rkt::sharedLoader().makeSessionMemory();
};

TEST_F(KeptLoader, HandsOnWhatComesWhileAResultStays) {
    std::latch end(1);
    ASSERT_TRUE(maySoonStay(&end));
    EXPECT_EQ(stayOfNext(), Stay::Brief);
    EXPECT_EQ(stayOfNext(), Stay::Brief);
    end.count_down();
    EXPECT_TRUE(maySoonStay());
}

TEST_F(KeptLoader, TakesAResultToItsHandler) {
    const auto session = origin.session();
    const auto threadOfHandler = [&] {
        const auto thread = std::make_shared<Awaited<Thread>>();
        session
            ->dataTaskWithRequest(
                requestTo(origin.url("/x")),
                [thread](auto, auto, auto) { thread->put(std::this_thread::get_id()); })
            ->resume();
        return thread->first();
    };
    bool isTheLoaders = false;  // unless it was kept, or another one leads meanwhile
    for (int i = 0; i < 1000 && !isTheLoaders; ++i) {
        isTheLoaders = threadOfHandler() == threadOfNext();
    }
    EXPECT_TRUE(isTheLoaders);
}

class KeptThreads : public Threads {
protected:
    void load(const std::shared_ptr<RKTURLSession>& session, std::function<void()> handler) const {
        session
            ->dataTaskWithRequest(requestTo(origin.url("/x")),
                                  [handler = std::move(handler)](auto, auto, auto) { handler(); })
            ->resume();
    }
};

TEST_F(KeptThreads, AHandlerMayWaitForAnotherSessionsAnswer) {
    Awaited<bool> answered;
    load(origin.session(), [&] {
        Awaited<bool> other;
        load(origin.session(), [&] { other.put(true); });
        answered.put(other.comes(1));
    });
    EXPECT_TRUE(answered.first());
}

TEST_F(KeptThreads, TwoHandlersMayWait) {
    Awaited<bool> answered;
    load(origin.session(), [&] {
        Awaited<bool> second;
        load(origin.session(), [&] {
            Awaited<bool> third;
            load(origin.session(), [&] { third.put(true); });
            second.put(third.comes(1));
        });
        answered.put(second.comes(1));
    });
    EXPECT_TRUE(answered.first());
}

TEST_F(KeptThreads, ManyHandlersMayWaitEachForTheAnswerOfAnother) {
    constexpr std::size_t many = 20;
    Awaited<int> begun;
    Awaited<bool> answered;
    for (std::size_t i = 0; i < many; ++i) {
        load(origin.session(), [&] {
            begun.put(1);
            const bool allBegin = begun.comes(many);
            Awaited<bool> other;
            load(origin.session(), [&] { other.put(true); });
            answered.put(allBegin && other.comes(1));
        });
    }
    EXPECT_THAT(answered.wait(many), testing::Each(true));
}

TEST_F(KeptThreads, AHandlerThatBlocksHoldsUpNobodyElse) {
    constexpr int others = 30;
    std::latch end(1);
    Awaited<bool> blocked;
    Awaited<bool> unblocked;
    load(origin.session(), [&] {
        blocked.put(true);
        end.wait();
        unblocked.put(true);
    });
    blocked.first();
    Awaited<int> done;
    const auto session = origin.session();
    for (int i = 0; i < others; ++i) {
        load(i % 2 == 0 ? session : origin.session(), [&] { done.put(1); });
    }
    EXPECT_EQ(done.wait(others).size(), std::size_t{others});
    end.count_down();
    EXPECT_TRUE(unblocked.first());
}

// Whichever comes first waits for all the others.
TEST_F(KeptThreads, WhatCameTogetherWithABlockedHandlersAnswerDoesNotWaitForIt) {
    constexpr int all = 20;
    auto hold = origin.server.hold({});
    std::atomic<bool> isFirst = true;
    Awaited<int> others;
    Awaited<bool> answered;
    for (int i = 0; i < all; ++i) {
        load(origin.session(), [&] {
            if (isFirst.exchange(false)) {
                answered.put(others.comes(all - 1));
            } else {
                others.put(1);
            }
        });
    }
    ASSERT_TRUE(hold.waitUntilReached(all));
    hold.release();
    EXPECT_TRUE(answered.first());
}

}  // namespace
