// The process may end or fork at any time, and need not run its main queue.

#include <KorvoGitService/RKTOperationQueue.h>
#include <KorvoGitService/RKTURLSession.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <latch>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "KorvoGitService/RKTJSON.h"
#include "tests/helpers/Awaited.h"
#include "tests/helpers/MainThread.h"
#include "tests/helpers/TemporaryFolder.h"
#include "tests/reliability/Faults.h"
#include "tests/reliability/Interposed.h"
#include "tests/reliability/Operations.h"

namespace {

using emulator::Gate;
using emulator::HoldStage;

constexpr int inOrder = 7;
constexpr int notReached = 2;

// Exit
// ------------------------------------------------------------------------------------------------

// A process of its own: the library's threads live as long as their process. What these functions
// make is never destroyed, since its threads run on while the process exits, as an application's
// may.
class ProcessExit : public testing::Test {
protected:
    ProcessExit() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        setenv("TMPDIR", files_.path().c_str(), 1);
    }
    ~ProcessExit() override { setenv("TMPDIR", usual_.c_str(), 1); }

private:
    const std::string usual_ = std::filesystem::temp_directory_path();
    const rkt::tests::TemporaryFolder files_;  // the process's, which removes none
};

using Calls = std::shared_ptr<Asker::Calls>;

// Stays to the end of the process, in sight of a leak check.
template <typename T, typename... Arguments>
T& lasting(Arguments&&... arguments) {
    static auto& all = *new std::vector<T*>;
    all.push_back(new T(std::forward<Arguments>(arguments)...));
    return *all.back();
}

void askAll(const Calls& calls) {
    for (const auto operation : allOperations) lasting<Asker>(operation).start(calls);
}

[[noreturn]] void exitIf(bool reached) {
    if (!reached) std::_Exit(notReached);
    std::exit(inOrder);
}

[[noreturn]] void exitWhileLookingUp() {
    auto& scene = lasting<Scene>();
    const auto gate = Names::silence(Scene::silentHost);
    scene.connectTo(Scene::silentHost, scene.server.httpsPort());
    askAll(std::make_shared<Asker::Calls>());
    exitIf(gate->waitForArrivals(1, patience));
}

[[noreturn]] void exitWhileConnecting() {
    auto& scene = lasting<Scene>();
    scene.gateway.beSilent();
    scene.connectTo("127.0.0.1", scene.gateway.port());
    askAll(std::make_shared<Asker::Calls>());
    exitIf(scene.gateway.waitForClient());
}

[[noreturn]] void exitWhileReceiving() {
    auto& scene = lasting<Scene>();
    auto& hold = lasting<emulator::Hold>(scene.server.hold({}, HoldStage::InBody));
    const auto calls = std::make_shared<Asker::Calls>();
    for (int i = 0; i < 10; ++i) askAll(calls);
    exitIf(hold.waitUntilReached(30));
}

[[noreturn]] void exitWhileDecoding() {
    lasting<Scene>();
    const auto gate = std::make_shared<Gate>();
    Inflating::holdAt(gate);
    lasting<Asker>(Operation::List).start(std::make_shared<Asker::Calls>());
    exitIf(gate->waitForArrivals(1, patience));
}

[[noreturn]] void exitInsideAHandler() {
    lasting<Scene>();
    auto& service = lasting<std::shared_ptr<RKTService>>(RKTService::serviceWithCredentials(
        credentialsFor("GitHub", std::nullopt, "octavia", "demo-token-octavia")));
    service->validateCredentialsWithCompletionHandler([](const auto&) { std::exit(inOrder); });
    std::latch never(1);
    never.wait();
    std::_Exit(notReached);
}

[[noreturn]] void exitWithAnUndrainedMainQueue() {
    auto& scene = lasting<Scene>();
    lasting<Asker>(Operation::TokenExchange).start(std::make_shared<Asker::Calls>());
    const bool reached = waitForMainQueue();
    // The connection was for one request. The emulator lets go of its end, which is in this process
    // too and must not come beside OpenSSL's clean-up.
    scene.server.stop();
    exitIf(reached);
}

// An application's own statics go after the loader has stopped, and after the statics of the
// libraries underneath.
[[noreturn]] void exitWithAServiceInAStatic() {
    static struct Application {
        std::shared_ptr<RKTService> service;
        ~Application() {
            service->validateCredentialsWithCompletionHandler(nullptr)->cancel();
            service->invalidateAndCancel();
            const auto one = RKTJSONSerialization::JSONObjectWithData("[1]");
            const auto another = RKTJSONSerialization::JSONObjectWithData("[1]");
            if (!one || !another) std::_Exit(notReached);
        }
    } application;
    const auto& scene = lasting<Scene>();
    application.service = RKTService::serviceWithCredentials(credentialsFor(
        "GitLabSelfHosted", scene.server.httpsURL(), "octavia", "demo-token-octavia"));
    exitIf(validate(*application.service) == std::nullopt);
}

TEST_F(ProcessExit, WhileNamesAreLookedUpIsOrderly) {
    EXPECT_EXIT(exitWhileLookingUp(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(ProcessExit, WhileConnectingIsOrderly) {
    EXPECT_EXIT(exitWhileConnecting(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(ProcessExit, WithTransfersRunningIsOrderly) {
    EXPECT_EXIT(exitWhileReceiving(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(ProcessExit, WhileDecodingIsOrderly) {
    EXPECT_EXIT(exitWhileDecoding(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(ProcessExit, FromInsideAHandlerIsOrderly) {
    EXPECT_EXIT(exitInsideAHandler(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(ProcessExit, WithATaskInTheMainQueueIsOrderly) {
    EXPECT_EXIT(exitWithAnUndrainedMainQueue(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(ProcessExit, MayUseAServiceOnceMore) {
    EXPECT_EXIT(exitWithAServiceInAStatic(), testing::ExitedWithCode(inOrder), "");
}

// Want of file descriptors
// ------------------------------------------------------------------------------------------------

// A process of its own, since the library's first use in a process is what is tested.
[[noreturn]] void useWithoutDescriptors() {
    const auto& scene = lasting<Scene>();
    const auto& service =
        lasting<std::shared_ptr<RKTService>>(RKTService::serviceWithCredentials(credentialsFor(
            "GitLabSelfHosted", scene.server.httpsURL(), "octavia", "demo-token-octavia")));
    SocketPairs::allow(false);
    for (int i = 0; i < 2; ++i) {
        if (codeOf(validate(*service)) != RKTError::NSURLErrorCannotConnectToHost)
            std::_Exit(notReached);
    }
    SocketPairs::allow(true);
    exitIf(validate(*service) == std::nullopt);
}

using FirstUse = ProcessExit;

TEST_F(FirstUse, WithoutDescriptorsFailsAndTheNextWorks) {
    EXPECT_EXIT(useWithoutDescriptors(), testing::ExitedWithCode(inOrder), "");
}

// Want of threads
// ------------------------------------------------------------------------------------------------

// By a stack that has no room in any address space.
void allowThreads(bool allowed) {
    constexpr std::size_t usual = std::size_t{8} << 20U;
    constexpr std::size_t tooMuch = std::size_t{1} << 52U;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, allowed ? usual : tooMuch);
    if (pthread_setattr_default_np(&attributes) != 0) std::_Exit(notReached);
    pthread_attr_destroy(&attributes);
}

template <typename Use>
bool throwsForWantOfThreads(Use use) {
    allowThreads(false);
    bool threw = false;
    try {
        use();
    } catch (const std::system_error&) {
        threw = true;
    }
    allowThreads(true);
    return threw;
}

[[noreturn]] void useWithoutThreads() {
    const auto& scene = lasting<Scene>();
    auto service = RKTService::serviceWithCredentials(credentialsFor(
        "GitLabSelfHosted", scene.server.httpsURL(), "octavia", "demo-token-octavia"));
    auto& calls = lasting<std::atomic<int>>();
    const auto use = [&] {
        service->validateCredentialsWithCompletionHandler([&](const auto&) { ++calls; });
    };
    if (!throwsForWantOfThreads(use)) std::_Exit(notReached);
    if (validate(*service) != std::nullopt || calls != 0) std::_Exit(notReached);
    service->invalidateAndCancel();
    const std::weak_ptr<RKTService> alive = std::exchange(service, nullptr);
    // Its session lets go of it after the last handler, and tells nobody.
    for (int look = 0; look < 3000 && !alive.expired(); ++look) usleep(10'000);
    exitIf(alive.expired());
}

[[noreturn]] void addOperationsWithoutThreads() {
    auto& queue = lasting<RKTOperationQueue>();
    auto& calls = lasting<Awaited<int>>();
    const auto add = [&](int call) { queue.addOperation([&, call] { calls.put(call); }); };
    if (!throwsForWantOfThreads([&] { add(1); })) std::_Exit(notReached);
    add(2);
    exitIf(calls.wait() == std::vector{2});
}

std::shared_ptr<RKTURLSession> sessionWithDelegate(
    std::shared_ptr<RKTURLSessionDelegate> delegate) {
    return RKTURLSession::sessionWithConfiguration(
        RKTURLSessionConfiguration::ephemeralSessionConfiguration(), std::move(delegate));
}

RKTURLRequest requestThatIsNotSent() {
    return RKTURLRequest(RKTURL::URLWithString("ftp://nowhere.example/"));
}

[[noreturn]] void cancelWithoutThreads() {
    const auto session = sessionWithDelegate(nullptr);
    auto& codes = lasting<Awaited<std::int64_t>>();
    const auto task = session->dataTaskWithRequest(
        requestThatIsNotSent(), [&](auto, auto, const auto& error) { codes.put(error->code()); });
    if (!throwsForWantOfThreads([&] { task->cancel(); })) std::_Exit(notReached);
    if (task->state() != RKTURLSessionDataTask::State::Suspended) std::_Exit(notReached);
    task->cancel();
    exitIf(codes.wait() == std::vector<std::int64_t>{RKTError::NSURLErrorCancelled});
}

[[noreturn]] void endASessionWithoutThreads() {
    struct Delegate : RKTURLSessionDelegate {};
    auto delegate = std::make_shared<Delegate>();
    const std::weak_ptr<Delegate> alive = delegate;
    const auto session = sessionWithDelegate(std::move(delegate));
    if (!throwsForWantOfThreads([&] { session->invalidateAndCancel(); })) std::_Exit(notReached);
    if (alive.expired()) std::_Exit(notReached);
    session->invalidateAndCancel();
    drain(*session->delegateQueue());
    exitIf(alive.expired());
}

[[noreturn]] void resumeInAnEndedSessionWithoutThreads() {
    const auto session = sessionWithDelegate(nullptr);
    session->invalidateAndCancel();
    auto ofHandler = std::make_shared<int>();
    const std::weak_ptr<int> alive = ofHandler;
    const auto task = session->dataTaskWithRequest(
        requestThatIsNotSent(), [kept = std::move(ofHandler)](auto, auto, const auto&) {});
    if (!throwsForWantOfThreads([&] { task->resume(); })) std::_Exit(notReached);
    exitIf(alive.expired() && task->state() == RKTURLSessionDataTask::State::Completed);
}

[[noreturn]] void failInAHandlerWithoutFurtherThreads() {
    const auto& scene = lasting<Scene>();
    const auto& service =
        lasting<std::shared_ptr<RKTService>>(RKTService::serviceWithCredentials(credentialsFor(
            "GitLabSelfHosted", scene.server.httpsURL(), "octavia", "demo-token-octavia")));
    const auto& session = lasting<std::shared_ptr<RKTURLSession>>(sessionWithDelegate(nullptr));
    auto& codes = lasting<Awaited<std::int64_t>>();
    auto& first = lasting<Awaited<bool>>();
    // Nothing but the request: to wait for its queue's end would be further work.
    service->validateCredentialsWithCompletionHandler(
        [&](const auto& error) { first.put(!error); });
    if (first.wait() != std::vector{true}) std::_Exit(notReached);
    allowThreads(false);
    service->validateCredentialsWithCompletionHandler([&](const auto&) {
        session
            ->dataTaskWithRequest(requestThatIsNotSent(),
                                  [&](auto, auto, const auto& error) { codes.put(error->code()); })
            ->resume();
    });
    exitIf(codes.wait() == std::vector<std::int64_t>{RKTError::NSURLErrorUnsupportedURL});
}

TEST_F(FirstUse, ToCancelWithoutThreadsThrowsAndTheNextWorks) {
    EXPECT_EXIT(cancelWithoutThreads(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(FirstUse, ToEndASessionWithoutThreadsThrowsAndTheNextWorks) {
    EXPECT_EXIT(endASessionWithoutThreads(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(FirstUse, InAnEndedSessionWithoutThreadsLeavesNothingBehind) {
    EXPECT_EXIT(resumeInAnEndedSessionWithoutThreads(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(FirstUse, IsTheLastThatNeedsAThread) {
    EXPECT_EXIT(failInAHandlerWithoutFurtherThreads(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(FirstUse, WithoutThreadsThrowsAndTheNextWorks) {
    EXPECT_EXIT(useWithoutThreads(), testing::ExitedWithCode(inOrder), "");
}
TEST_F(FirstUse, OfAQueueWithoutThreadsThrowsAndTheNextWorks) {
    EXPECT_EXIT(addOperationsWithoutThreads(), testing::ExitedWithCode(inOrder), "");
}

// Fork
// ------------------------------------------------------------------------------------------------

class Fork : public testing::TestWithParam<Operation> {};

TEST_P(Fork, LeavesTheParentAsItWas) {
    Scene scene;
    Asker asker(GetParam());
    EXPECT_EQ(asker.ask(), std::nullopt);
    auto hold = scene.server.hold({}, HoldStage::InBody);
    const auto calls = std::make_shared<Asker::Calls>();
    const auto task = asker.start(calls);
    ASSERT_TRUE(hold.waitUntilReached());

    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(inOrder);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == inOrder);

    hold.release();
    EXPECT_EQ(asker.outcome(*task, calls), std::nullopt);
    EXPECT_EQ(asker.ask(), std::nullopt);
    // The child has not ended the connection. A token request takes none that was used before.
    const auto connections = GetParam() == Operation::TokenExchange ? 3U : 1U;
    EXPECT_EQ(scene.server.acceptedConnections(), connections);
    EXPECT_TRUE(asker.endsWithoutRest());
}

INSTANTIATE_TEST_SUITE_P(, Fork, testing::ValuesIn(allOperations),
                         [](const auto& tested) { return std::string(nameOf(tested.param)); });

// The main queue
// ------------------------------------------------------------------------------------------------

TEST(UndrivenMainQueue, HoldsUpNothingButTokenUpdates) {
    constexpr std::size_t count = 20;
    const Scene scene;
    const Asker updater(Operation::TokenExchange);
    std::vector<std::shared_ptr<RKTURLSessionDataTask>> tasks;
    const auto calls = std::make_shared<Asker::Calls>();
    for (std::size_t i = 0; i < count; ++i) tasks.push_back(updater.start(calls));
    ASSERT_TRUE(scene.server.waitForRequests(count));
    Asker lister(Operation::List);
    EXPECT_EQ(lister.ask(), std::nullopt);
    EXPECT_EQ(calls->count(), 0U);

    EXPECT_TRUE(runMainQueueUntil([&] { return calls->count() >= count; }));
    drain(updater.queue());
    EXPECT_EQ(RKTMainQueue::drain(), 0U);
    for (const auto& error : calls->wait(count)) EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(calls->count(), count);
}

}  // namespace
