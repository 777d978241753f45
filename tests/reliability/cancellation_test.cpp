// Cancelling each operation at each stage of it.

#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "support/session/Loader.h"
#include "tests/reliability/Faults.h"
#include "tests/reliability/Interposed.h"
#include "tests/reliability/Operations.h"

namespace {

using emulator::ConnectionStage;
using emulator::Gate;
using emulator::HoldStage;
using emulator::RawAnswer;

/// Where a task is kept. Its constructor prepares the scene.
class Stage {
public:
    Stage() = default;
    virtual ~Stage() = default;
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    virtual void prepareQueue(RKTOperationQueue&) {}
    /// False when no task comes here.
    virtual bool waitUntilReached() = 0;
    /// Lets the task go on. It is not called where nobody may have to wait for that.
    virtual void letGo() {}
};

/// The look-up is not answered before the test's end.
class LookingUp : public Stage {
public:
    explicit LookingUp(Scene& scene) {
        scene.connectTo(Scene::silentHost, scene.server.httpsPort());
    }
    ~LookingUp() override { gate_->open(); }
    bool waitUntilReached() override { return gate_->waitForArrivals(1, patience); }

private:
    std::shared_ptr<Gate> gate_ = Names::silence(Scene::silentHost);
};

class Connecting : public Stage {
public:
    explicit Connecting(Scene& scene) : gateway_(scene.gateway) {
        gateway_.beSilent();
        scene.connectTo("127.0.0.1", gateway_.port());
    }
    bool waitUntilReached() override { return gateway_.waitForClient(); }

private:
    Gateway& gateway_;
};

class Securing : public Stage {
public:
    explicit Securing(Scene& scene) {
        scene.server.disturb(ConnectionStage::ClientHello, RawAnswer().await(gate_).close(), 1);
    }
    ~Securing() override { gate_->open(); }
    bool waitUntilReached() override { return gate_->waitForArrivals(1, patience); }

private:
    std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

template <HoldStage stage>
class Receiving : public Stage {
public:
    explicit Receiving(Scene& scene) : hold_(scene.server.hold({}, stage)) {}
    bool waitUntilReached() override { return hold_.waitUntilReached(); }

private:
    emulator::Hold hold_;
};

class Decoding : public Stage {
public:
    explicit Decoding(Scene&) { Inflating::holdAt(gate_); }
    ~Decoding() override { letGo(); }
    bool waitUntilReached() override { return gate_->waitForArrivals(1, patience); }
    void letGo() override {
        Inflating::holdAt(nullptr);
        gate_->open();
    }

private:
    std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

/// The answer has arrived, but its queue is busy.
class WaitingInTheQueue : public Stage {
public:
    explicit WaitingInTheQueue(Scene& scene) : scene_(scene) {}
    ~WaitingInTheQueue() override { letGo(); }
    void prepareQueue(RKTOperationQueue& queue) override {
        queue.addOperation([busy = busy_] { busy->wait(); });
    }
    bool waitUntilReached() override {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (rkt::sharedLoader().exchangesUnderWay() > 0) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::yield();
        }
        // The loader took that one to the queue before this one.
        return scene_.load("https://api.github.com/user").status() == 200;
    }
    void letGo() override {
        if (!busy_->try_wait()) busy_->count_down();
    }

private:
    const Scene& scene_;
    std::shared_ptr<std::latch> busy_ = std::make_shared<std::latch>(1);
};

struct NamedStage {
    const char* name;
    std::unique_ptr<Stage> (*enter)(Scene& scene);
};
void PrintTo(const NamedStage& stage, std::ostream* stream) {
    *stream << stage.name;
}

template <class Kind>
std::unique_ptr<Stage> enter(Scene& scene) {
    return std::make_unique<Kind>(scene);
}

constexpr NamedStage stages[] = {
    {"LookingUpTheName", &enter<LookingUp>},
    {"Connecting", &enter<Connecting>},
    {"SecuringTheConnection", &enter<Securing>},
    {"WaitingForHeaders", &enter<Receiving<HoldStage::BeforeHeaders>>},
    {"BetweenHeadersAndBody", &enter<Receiving<HoldStage::AfterHeaders>>},
    {"InTheBody", &enter<Receiving<HoldStage::InBody>>},
    {"Decoding", &enter<Decoding>},
    {"WaitingInTheQueue", &enter<WaitingInTheQueue>},
};

class Cancellation : public testing::TestWithParam<std::tuple<NamedStage, Operation>> {
protected:
    Scene scene;
    std::unique_ptr<Stage> stage = std::get<0>(GetParam()).enter(scene);
    Asker asker{std::get<1>(GetParam())};
    std::shared_ptr<Asker::Calls> calls = std::make_shared<Asker::Calls>();

    /// Starts the operation; null when it does not come to the stage.
    std::shared_ptr<RKTURLSessionDataTask> startAndReach() {
        stage->prepareQueue(asker.queue());
        auto task = asker.start(calls);
        const bool isReached = stage->waitUntilReached();
        EXPECT_EQ(calls->count(), 0U);
        return isReached ? task : nullptr;
    }
    void expectCancelled(const RKTURLSessionDataTask& task) {
        const auto error = asker.outcome(task, calls);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), RKTError::NSURLErrorDomain);
        EXPECT_EQ(error->code(), RKTError::NSURLErrorCancelled);
    }
    /// While what was cancelled may still be held.
    void expectThatAllGoesOn() {
        scene.mend();
        EXPECT_EQ(asker.ask(), std::nullopt);
        EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);
        EXPECT_TRUE(asker.endsWithoutRest());
    }
};

TEST_P(Cancellation, TwiceIsOneAndHarmsNothingElse) {
    const auto task = startAndReach();
    ASSERT_TRUE(task);
    task->cancel();
    task->cancel();
    EXPECT_NE(task->state(), RKTURLSessionDataTask::State::Running);
    stage->letGo();
    expectCancelled(*task);
    expectThatAllGoesOn();
}

TEST_P(Cancellation, FromManyThreadsAtOnceIsOne) {
    const auto task = startAndReach();
    ASSERT_TRUE(task);
    {
        std::latch start(4);
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] { start.arrive_and_wait(), task->cancel(); });
        }
    }
    stage->letGo();
    expectCancelled(*task);
    expectThatAllGoesOn();
}

// Requests to one origin wait for the first one's connection, in case it can carry them all.
TEST(CancelledConnecting, LetsThoseThatWaitedForTheConnectionMakeTheirOwn) {
    Scene scene;
    LookingUp stage(scene);
    const Asker first(Operation::Validate);
    const Asker second(Operation::List);
    const auto calls = std::make_shared<Asker::Calls>();
    const auto task = first.start(calls);
    ASSERT_TRUE(stage.waitUntilReached());
    const auto others = std::make_shared<Asker::Calls>();
    const auto other = second.start(others);
    scene.mend();
    task->cancel();
    EXPECT_TRUE(first.outcome(*task, calls));
    EXPECT_EQ(second.outcome(*other, others), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(, Cancellation,
                         testing::Combine(testing::ValuesIn(stages),
                                          testing::ValuesIn(allOperations)),
                         [](const auto& tested) {
                             return std::string(std::get<0>(tested.param).name) + "_" +
                                    nameOf(std::get<1>(tested.param));
                         });

}  // namespace
