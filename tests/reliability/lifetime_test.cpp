// Services that end while they work, and inside their own handlers.

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "support/session/Loader.h"
#include "tests/helpers/Services.h"
#include "tests/reliability/Operations.h"

namespace {

using End = void (RKTService::*)();
using Error = std::optional<RKTError>;

std::shared_ptr<RKTService> newService() {
    return RKTService::serviceWithCredentials(
        credentialsFor("GitHub", std::nullopt, "octavia", "demo-token-octavia"));
}

class Lifetime : public testing::Test {
protected:
    SharedOrigin origin;
    std::shared_ptr<RKTService> service = newService();
    const std::weak_ptr<RKTService> alive = service;
    const std::shared_ptr<RKTOperationQueue> queue = service->URLSession()->delegateQueue();
    Awaited<Error> outcomes;

    Lifetime() { answerEverybody(origin.server); }
    ~Lifetime() override {
        if (service) service->invalidateAndCancel();
    }

    RKTService::ValidationHandler intoOutcomes() {
        return [this](Error error) { outcomes.put(std::move(error)); };
    }
    /// Nobody holds the service, and nothing more comes of it.
    void expectTheEndAfter(std::size_t calls) {
        drain(*queue);
        EXPECT_EQ(outcomes.count(), calls);
        EXPECT_TRUE(alive.expired());
    }
};

TEST_F(Lifetime, AServiceThatNobodyHoldsFinishesItsWorkAndIsGone) {
    auto hold = origin.server.hold({});
    service->validateCredentialsWithCompletionHandler(intoOutcomes());
    ASSERT_TRUE(hold.waitUntilReached());
    service->finishTasksAndInvalidate();
    service.reset();
    drain(*queue);
    EXPECT_FALSE(alive.expired());
    hold.release();
    EXPECT_EQ(outcomes.first(), std::nullopt);
    expectTheEndAfter(1);
}

TEST_F(Lifetime, AServiceThatIsEndedWhileItDrainsCancelsTheRest) {
    auto hold = origin.server.hold({.path = "/user/repos"});
    service->fetchRepositoriesWithRequest(
        nullptr, [this](const auto& result) { outcomes.put(result->error()); });
    ASSERT_TRUE(hold.waitUntilReached());
    service->finishTasksAndInvalidate();
    service->invalidateAndCancel();
    service.reset();
    EXPECT_EQ(codeOf(outcomes.first()), RKTError::NSURLErrorCancelled);
    expectTheEndAfter(1);
}

class EndedInsideAHandler : public Lifetime, public testing::WithParamInterface<End> {};

TEST_P(EndedInsideAHandler, AServiceIsGoneOnceItsOtherWorkHasEnded) {
    auto hold = origin.server.hold({.path = "/user/repos"});
    service->fetchRepositoriesWithRequest(
        nullptr, [this](const auto& result) { outcomes.put(result->error()); });
    ASSERT_TRUE(hold.waitUntilReached());
    Awaited<bool> ended;
    service->validateCredentialsWithCompletionHandler([&](Error) {
        (service.get()->*GetParam())();
        service.reset();
        EXPECT_FALSE(alive.expired());  // it is not destroyed inside a call of its own
        ended.put(true);
    });
    ended.first();
    const bool cancels = GetParam() == &RKTService::invalidateAndCancel;
    if (!cancels) hold.release();
    EXPECT_EQ(outcomes.first().has_value(), cancels);
    EXPECT_EQ(codeOf(outcomes.first()) == RKTError::NSURLErrorCancelled, cancels);
    expectTheEndAfter(1);
}

TEST_P(EndedInsideAHandler, NewWorkIsCancelledOutsideTheCallThatStartsIt) {
    service->validateCredentialsWithCompletionHandler([this](Error) {
        (service.get()->*GetParam())();
        service->validateCredentialsWithCompletionHandler(intoOutcomes());
        EXPECT_EQ(outcomes.count(), 0U);
        service.reset();
    });
    EXPECT_EQ(codeOf(outcomes.first()), RKTError::NSURLErrorCancelled);
    expectTheEndAfter(1);
    EXPECT_EQ(origin.server.requestCount(), 1U);
}

TEST_P(EndedInsideAHandler, TheHandlerMayHoldTheLastReference) {
    auto handler = [last = service, end = GetParam(), this](Error error) mutable {
        (last.get()->*end)();
        last.reset();
        outcomes.put(std::move(error));
    };
    service->validateCredentialsWithCompletionHandler(std::move(handler));
    service.reset();
    EXPECT_EQ(outcomes.first(), std::nullopt);
    expectTheEndAfter(1);
}

INSTANTIATE_TEST_SUITE_P(, EndedInsideAHandler,
                         testing::Values(&RKTService::finishTasksAndInvalidate,
                                         &RKTService::invalidateAndCancel),
                         [](const auto& tested) {
                             return tested.param == &RKTService::invalidateAndCancel ? "Cancel"
                                                                                     : "Finish";
                         });

TEST_F(Lifetime, AHandlerMayGoOnAskingUntilItHasEnough) {
    constexpr int rounds = 5;
    int round = 0;
    std::function<void(Error)> next = [&](Error error) {
        if (error || ++round == rounds) return outcomes.put(std::move(error));
        service->fetchRepositoriesWithRequest(nullptr,
                                              [&](const auto& result) { next(result->error()); });
    };
    service->validateCredentialsWithCompletionHandler(next);
    EXPECT_EQ(outcomes.first(), std::nullopt);
    drain(*queue);
    EXPECT_EQ(origin.server.requestCount(), static_cast<std::size_t>(rounds));
}

TEST_F(Lifetime, WorkOfASessionThatWasReplacedEndsOnThatSession) {
    auto hold = origin.server.hold({});
    service->validateCredentialsWithCompletionHandler(intoOutcomes());
    ASSERT_TRUE(hold.waitUntilReached());
    const auto former = service->URLSession();
    service->setURLSession(RKTURLSession::sessionWithConfiguration(
        RKTURLSessionConfiguration::ephemeralSessionConfiguration(), service));
    former->finishTasksAndInvalidate();
    hold.release();
    EXPECT_EQ(outcomes.first(), std::nullopt);
    drain(*queue);
    EXPECT_EQ(validate(*service), std::nullopt);
}

// Many
// -----------------------------------------------------------------------------------------------------------------

/// Makes, uses, cancels and ends a service in a way that the round says. How often handlers ran;
/// throws unless nothing is left of it.
std::size_t liveAndDie(int round) {
    auto service = newService();
    const std::weak_ptr<RKTService> alive = service;
    const auto queue = service->URLSession()->delegateQueue();
    const auto calls = std::make_shared<Awaited<bool>>();
    std::size_t expected = 1;
    const auto task = service->validateCredentialsWithCompletionHandler(
        [calls](const Error&) { calls->put(true); });
    switch (round % 4) {
        case 0:
            task->cancel();
            service->finishTasksAndInvalidate();
            break;
        case 1:
            service->fetchRepositoriesWithRequest(nullptr,
                                                  [calls](const auto&) { calls->put(true); });
            expected = 2;
            break;
        case 2:  // some may come to their ends; all of them would take long
            if (round % 20 == 2) calls->wait();
            break;
        default:
            break;
    }
    service->invalidateAndCancel();
    service.reset();
    calls->wait(expected);
    drain(*queue);
    if (!alive.expired()) throw std::runtime_error("something holds a service that was ended");
    return calls->count() - (expected - 1);
}

TEST(Lives, TenThousandOnEightThreadsLeaveNothing) {
    constexpr int threadCount = 8;
    constexpr int rounds = 10'000 / threadCount;
    SharedOrigin origin;
    answerEverybody(origin.server);
    std::atomic<std::size_t> calls = 0;
    {
        std::vector<std::jthread> threads;
        for (int number = 0; number < threadCount; ++number) {
            threads.emplace_back([&] {
                for (int round = 0; round < rounds; ++round) calls += liveAndDie(round);
            });
        }
    }
    EXPECT_EQ(calls, static_cast<std::size_t>(threadCount * rounds));
    // What was cancelled has left the loader when it has done what was asked of it later.
    EXPECT_EQ(origin.load("https://api.github.com/user").status(), 200);
    EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);
}

}  // namespace
