// When tasks and sessions end: each handler runs once, on its queue, and everything is let go. What
// is cancelled at which stage, and services, are in tests/reliability.

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

#include "tests/helpers/Loading.h"

namespace {

using State = RKTURLSessionDataTask::State;

class Lifecycle : public testing::Test {
protected:
    Origin origin;
    std::shared_ptr<RKTURLSession> session = origin.session();
    std::shared_ptr<Awaited<Loaded>> loaded = std::make_shared<Awaited<Loaded>>();

    Lifecycle() { origin.server.script({}, emulator::textAnswer(200, std::string(1000, 'a'))); }

    std::shared_ptr<RKTURLSessionDataTask> makeTask() {
        return Origin::task(*session, requestTo(origin.url("/x")), loaded);
    }
    /// After this, whatever was on its way to the session's queue has run.
    void settle() { drain(*session->delegateQueue()); }

    void expectCancelledOnce() {
        EXPECT_EQ(loaded->first().code(), RKTError::NSURLErrorCancelled);
        EXPECT_FALSE(loaded->first().data);
        settle();
        EXPECT_EQ(loaded->count(), 1U);
    }
};

TEST_F(Lifecycle, ATaskIsMadeSuspendedAndSendsNothing) {
    const auto task = makeTask();
    EXPECT_EQ(task->state(), State::Suspended);
    settle();
    EXPECT_EQ(origin.server.acceptedConnections(), 0U);
    EXPECT_EQ(loaded->count(), 0U);
}

TEST_F(Lifecycle, ATaskDroppedBeforeItIsResumedNeverRunsItsHandler) {
    const auto token = std::make_shared<int>(1);
    const std::weak_ptr<int> alive = token;
    session->dataTaskWithRequest(requestTo(origin.url("/x")),
                                 [token](auto, auto, auto) { FAIL(); });
    EXPECT_EQ(alive.use_count(), 1);
    settle();
}

TEST_F(Lifecycle, ResumingTwiceLoadsOnce) {
    const auto task = makeTask();
    task->resume();
    task->resume();
    loaded->first();
    task->resume();
    settle();
    EXPECT_EQ(task->state(), State::Completed);
    EXPECT_EQ(loaded->count(), 1U);
    EXPECT_EQ(origin.server.requestCount(), 1U);
}

TEST_F(Lifecycle, ARunningTaskNeedsNobodyToHoldIt) {
    auto hold = origin.server.hold({});
    makeTask()->resume();
    session.reset();
    ASSERT_TRUE(hold.waitUntilReached());
    hold.release();
    EXPECT_EQ(loaded->first().status(), 200);
}

TEST_F(Lifecycle, AnEmptyHandlerIsAllowed) {
    const auto task = session->dataTaskWithRequest(requestTo(origin.url("/x")), nullptr);
    task->resume();
    ASSERT_TRUE(origin.server.waitForRequests(1));
    task->cancel();
    settle();
    EXPECT_EQ(task->state(), State::Completed);
}

TEST_F(Lifecycle, TheHandlerNeverRunsInsideTheCallThatStartsOrCancels) {
    std::latch calling(1);
    std::atomic<bool> returned = false;
    std::atomic<bool> early = false;
    session->delegateQueue()->addOperation([&] { calling.wait(); });
    const auto task = session->dataTaskWithRequest(
        RKTURLRequest(std::nullopt), [&](auto, auto, auto) { early = !returned.load(); });
    task->resume();  // fails at once, since there is no URL
    task->cancel();
    returned = true;
    calling.count_down();
    settle();
    EXPECT_EQ(task->state(), State::Completed);
    EXPECT_FALSE(early);
}

TEST_F(Lifecycle, TheHandlerIsDestroyedOnTheQueueRightAfterItRan) {
    struct Witness {
        Awaited<std::thread::id>* destroyed;
        ~Witness() { destroyed->put(std::this_thread::get_id()); }
    };
    Awaited<std::thread::id> ran;
    Awaited<std::thread::id> destroyed;
    auto witness = std::make_shared<Witness>(&destroyed);
    const auto task = session->dataTaskWithRequest(
        requestTo(origin.url("/x")), [witness = std::move(witness), &ran](auto, auto, auto) {
            ran.put(std::this_thread::get_id());
        });
    task->resume();
    EXPECT_EQ(destroyed.first(), ran.first());
}

// Cancelling
// -----------------------------------------------------------------------------------------------------------

TEST_F(Lifecycle, CancelBeforeResume) {
    const auto task = makeTask();
    task->cancel();
    task->resume();
    expectCancelledOnce();
    EXPECT_EQ(origin.server.acceptedConnections(), 0U);
}

TEST_F(Lifecycle, CancelAtOnceAfterResume) {
    const auto task = makeTask();
    task->resume();
    task->cancel();
    expectCancelledOnce();
}

TEST_F(Lifecycle, CancelAfterCompletionDoesNothing) {
    const auto task = makeTask();
    task->resume();
    EXPECT_EQ(loaded->first().status(), 200);
    task->cancel();
    settle();
    EXPECT_EQ(loaded->count(), 1U);
    EXPECT_EQ(task->state(), State::Completed);
}

TEST_F(Lifecycle, CancelFromItsOwnHandlerDoesNothing) {
    std::shared_ptr<RKTURLSessionDataTask> task;
    Awaited<State> seen;
    task = session->dataTaskWithRequest(requestTo(origin.url("/x")), [&](auto data, auto, auto) {
        task->cancel();
        EXPECT_TRUE(data);
        seen.put(task->state());
    });
    task->resume();
    EXPECT_EQ(seen.first(), State::Completed);
    settle();
    EXPECT_EQ(seen.count(), 1U);
}

TEST_F(Lifecycle, ManyTasksCancelledWhileTheyEndAllEndOnce) {
    constexpr int count = 200;
    const auto outcomes = std::make_shared<Awaited<Loaded>>();
    std::vector<std::shared_ptr<RKTURLSessionDataTask>> tasks;
    for (int i = 0; i < count; ++i)
        tasks.push_back(Origin::task(*session, requestTo(origin.url("/x")), outcomes));
    for (const auto& task : tasks) task->resume();
    std::vector<std::jthread> threads;
    for (std::size_t from = 0; from < 4; ++from) {
        threads.emplace_back([&, from] {
            for (auto i = from; i < tasks.size(); i += 4) tasks[i]->cancel();
        });
    }
    threads.clear();
    outcomes->wait(count);
    settle();
    EXPECT_EQ(outcomes->count(), static_cast<std::size_t>(count));
    for (const auto& outcome : outcomes->wait()) {
        EXPECT_TRUE(outcome.code() == RKTError::NSURLErrorCancelled || outcome.status() == 200);
    }
}

// Inside handlers
// ------------------------------------------------------------------------------------------------------

TEST_F(Lifecycle, AHandlerMayStartNewWork) {
    session
        ->dataTaskWithRequest(
            requestTo(origin.url("/x")),
            [this](auto, auto, auto) {
                Origin::task(*session, requestTo(origin.url("/y")), loaded)->resume();
            })
        ->resume();
    EXPECT_EQ(loaded->first().status(), 200);
}

TEST_F(Lifecycle, AHandlerMayEndTheSessionAndDropEverything) {
    struct Everything {
        std::shared_ptr<RKTURLSession> session;
        std::shared_ptr<RKTURLSessionDataTask> task;
    };
    Awaited<bool> done;
    auto everything = std::make_shared<Everything>();
    everything->session = session;
    everything->task =
        session->dataTaskWithRequest(requestTo(origin.url("/x")), [&](auto, auto, auto) {
            everything->session->invalidateAndCancel();
            session.reset();
            everything.reset();
            done.put(true);
        });
    const auto task = everything->task;
    task->resume();
    EXPECT_TRUE(done.first());
}

TEST_F(Lifecycle, HandlersOfASessionRunOneAtATimeAndThoseOfOthersInParallel) {
    std::atomic<int> inside = 0;
    Awaited<int> seen;
    for (int i = 0; i < 20; ++i) {
        session
            ->dataTaskWithRequest(requestTo(origin.url("/x")),
                                  [&](auto, auto, auto) {
                                      seen.put(++inside);
                                      --inside;
                                  })
            ->resume();
    }
    for (const int count : seen.wait(20)) EXPECT_EQ(count, 1);

    std::latch both(2);  // each waits for the other: one thread could not do it
    const auto other = origin.session();
    Awaited<bool> met;
    for (const auto& one : {session, other}) {
        one->dataTaskWithRequest(requestTo(origin.url("/x")),
                                 [&](auto, auto, auto) {
                                     both.arrive_and_wait();
                                     met.put(true);
                                 })
            ->resume();
    }
    EXPECT_EQ(met.wait(2).size(), 2U);
}

// Ending sessions
// ------------------------------------------------------------------------------------------------------

struct Delegate : RKTURLSessionDelegate {
    explicit Delegate(Awaited<int>& destructions) : destroyed(destructions) {}
    ~Delegate() override { destroyed.put(1); }
    Awaited<int>& destroyed;
};

class Ending : public Lifecycle {
protected:
    Awaited<int> destroyed;
    Ending() { session = origin.session(std::make_shared<Delegate>(destroyed)); }
    ~Ending() override {  // the delegate refers to `destroyed`
        session->invalidateAndCancel();
        destroyed.wait();
    }
};

TEST_F(Ending, TheSessionHoldsItsDelegateUntilItIsEnded) {
    settle();
    EXPECT_EQ(destroyed.count(), 0U);
    session->finishTasksAndInvalidate();
    EXPECT_EQ(destroyed.first(), 1);
}

TEST_F(Ending, FinishTasksLetsWorkEndAndThenTheDelegateGo) {
    auto hold = origin.server.hold({});
    makeTask()->resume();
    ASSERT_TRUE(hold.waitUntilReached());
    session->finishTasksAndInvalidate();
    settle();
    EXPECT_EQ(destroyed.count(), 0U);
    hold.release();
    EXPECT_EQ(loaded->first().status(), 200);
    EXPECT_EQ(destroyed.first(), 1);
}

TEST_F(Ending, FinishTasksWaitsForATaskThatWasMadeButNotResumed) {
    auto task = makeTask();
    session->finishTasksAndInvalidate();
    settle();
    EXPECT_EQ(destroyed.count(), 0U);
    task->resume();
    EXPECT_EQ(loaded->first().status(), 200);
    EXPECT_EQ(destroyed.first(), 1);
}

TEST_F(Ending, ADroppedSuspendedTaskHoldsNothingBack) {
    auto task = makeTask();
    session->finishTasksAndInvalidate();
    task.reset();
    EXPECT_EQ(destroyed.first(), 1);
    EXPECT_EQ(loaded->count(), 0U);
}

TEST_F(Ending, InvalidateAndCancelCancelsSuspendedAndRunningTasks) {
    auto hold = origin.server.hold({});
    const auto suspended = makeTask();
    const auto running = makeTask();
    running->resume();
    ASSERT_TRUE(hold.waitUntilReached());
    session->invalidateAndCancel();
    for (const auto& outcome : loaded->wait(2))
        EXPECT_EQ(outcome.code(), RKTError::NSURLErrorCancelled);
    EXPECT_EQ(destroyed.first(), 1);
    settle();
    EXPECT_EQ(loaded->count(), 2U);
}

TEST_F(Ending, EndingTwiceIsHarmless) {
    session->finishTasksAndInvalidate();
    session->invalidateAndCancel();
    session->finishTasksAndInvalidate();
    EXPECT_EQ(destroyed.first(), 1);
    settle();
    EXPECT_EQ(destroyed.count(), 1U);
}

TEST_F(Ending, ANewTaskOnAnEndedSessionIsCancelled) {
    session->finishTasksAndInvalidate();
    const auto task = makeTask();
    EXPECT_EQ(task->state(), State::Suspended);
    task->resume();
    expectCancelledOnce();
    EXPECT_EQ(origin.server.acceptedConnections(), 0U);
}

TEST_F(Ending, TheSharedSessionCannotBeEnded) {
    const auto shared = RKTURLSession::sharedSession();
    EXPECT_EQ(shared, RKTURLSession::sharedSession());
    shared->invalidateAndCancel();
    RKTNetworkSettings::setShared(origin.settings);
    Origin::task(*shared, requestTo(origin.url("/x")), loaded)->resume();
    EXPECT_EQ(loaded->first().status(), 200);
    RKTNetworkSettings::setShared({});
}

TEST_F(Ending, AConfigurationKeepsTheSettingsOfItsTime) {
    auto settings = origin.settings;
    settings.maximumBodySize = 7;
    RKTNetworkSettings::setShared(settings);
    const auto made = RKTURLSession::sessionWithConfiguration(
        RKTURLSessionConfiguration::ephemeralSessionConfiguration());
    RKTNetworkSettings::setShared({});
    EXPECT_EQ(made->configuration().networkSettings, settings);
    Origin::task(*made, requestTo(origin.url("/x")), loaded)->resume();
    EXPECT_EQ(loaded->first().code(), RKTError::NSURLErrorDataLengthExceedsMaximum);
}

}  // namespace
