// Many more requests than connections: each gets its turn.

#include <gmock/gmock.h>
#include <poll.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include "tests/helpers/Gateway.h"
#include "tests/helpers/Loading.h"

namespace {

using emulator::RawAnswer;

class Turns : public testing::Test {
protected:
    static constexpr std::size_t connections = 4;
    Origin origin;
    std::shared_ptr<RKTURLSession> session;
    std::shared_ptr<Awaited<Loaded>> loaded = std::make_shared<Awaited<Loaded>>();

    Turns() {
        origin.settings.maximumConnectionsPerOrigin = connections;
        RKTNetworkSettings::setShared(origin.settings);
        session = origin.session();
        origin.server.script({}, emulator::textAnswer(200, "body"));
    }
    ~Turns() override { RKTNetworkSettings::setShared({}); }

    std::shared_ptr<RKTURLSessionDataTask> start(const char* method) {
        auto request = requestTo(origin.url("/x"));
        request.setHTTPMethod(method);
        auto task = Origin::task(*session, request, loaded);
        task->resume();
        return task;
    }
    std::vector<std::shared_ptr<RKTURLSessionDataTask>> startMany(
        std::size_t count, const std::vector<const char*>& methods) {
        std::vector<std::shared_ptr<RKTURLSessionDataTask>> tasks;
        for (std::size_t i = 0; i < count; ++i) tasks.push_back(start(methods[i % methods.size()]));
        return tasks;
    }
    void expectThatAllComplete(std::size_t count) {
        for (const auto& result : loaded->wait(count)) {
            EXPECT_FALSE(result.error);
            EXPECT_EQ(result.data, "body");
        }
        EXPECT_EQ(origin.server.requestCount(), count);
    }
};

// Of hosts that share nothing but that they are reached without a proxy, or through one that makes
// a connection to each.
TEST_F(Turns, AreNotTakenFromAHostByAnotherOne) {
    const auto startTo = [this](const std::string& url) {
        const auto task = Origin::task(*session, requestTo(url), loaded);
        task->resume();
        return task;
    };
    Gateway silent;
    silent.beSilent();
    origin.settings.proxy = "";
    session = RKTURLSession::sessionWithConfiguration({origin.settings});
    const auto stuck = startTo("http://127.0.0.1:" + std::to_string(silent.port()));
    ASSERT_TRUE(silent.waitForClient());
    EXPECT_EQ(origin.load(origin.httpURL("/x")).data, "body");
    stuck->cancel();
    loaded->wait(1);

    using boost::asio::ip::tcp;
    boost::asio::io_context context;
    tcp::acceptor proxy(context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0));
    origin.settings.proxy = "socks5h://127.0.0.1:" + std::to_string(proxy.local_endpoint().port());
    session = RKTURLSession::sessionWithConfiguration({origin.settings});
    const auto one = startTo("http://one.example/");
    pollfd client = {proxy.native_handle(), POLLIN, 0};
    ASSERT_EQ(poll(&client, 1, 30'000), 1);
    const auto first = proxy.accept();  // and no word to it
    const auto another = startTo("http://another.example/");
    EXPECT_EQ(poll(&client, 1, 30'000), 1);
    one->cancel();
    another->cancel();
    loaded->wait(3);
}

// What is led to one HTTP proxy counts as the proxy's, also where its name begins like a scheme.
TEST_F(Turns, OfAnHTTPProxyAreTakenByAllHostsBehindIt) {
    Gateway proxy;
    proxy.beSilent();
    auto settings = origin.settings;
    settings.proxy = "socks.localhost:" + std::to_string(proxy.port());
    const auto proxied = RKTURLSession::sessionWithConfiguration({settings});
    std::vector<std::shared_ptr<RKTURLSessionDataTask>> tasks;
    for (const auto* const url : {"http://one.example/", "http://another.example/"}) {
        tasks.push_back(Origin::task(*proxied, requestTo(url), loaded));
        tasks.back()->resume();
    }
    ASSERT_TRUE(proxy.waitForClient());
    // One thread at a time loads: it would have opened the other's connection before this one.
    EXPECT_EQ(origin.load(origin.httpURL("/x")).data, "body");
    EXPECT_EQ(proxy.waitingClients(), 1U);
    for (const auto& task : tasks) task->cancel();
    loaded->wait(2);
}

class TurnsOf : public Turns, public testing::WithParamInterface<std::vector<const char*>> {};

TEST_P(TurnsOf, ComeToAll) {
    startMany(60, GetParam());
    expectThatAllComplete(60);
}

TEST_P(TurnsOf, ComeToAllWhenEachConnectionIsClosed) {
    origin.server.clearScripts();
    origin.server.script(
        {}, RawAnswer()
                .send("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 4\r\n\r\nbody")
                .close());
    startMany(60, GetParam());
    expectThatAllComplete(60);
}

TEST_P(TurnsOf, ComeToAllWhenSomeConnectionsFail) {
    origin.server.disturb(emulator::ConnectionStage::ClientHello, RawAnswer().close(), 7);
    startMany(60, GetParam());
    const auto results = loaded->wait(60);
    EXPECT_EQ(std::ranges::count_if(results, [](const auto& one) { return one.error.has_value(); }),
              7);
}

TEST_P(TurnsOf, TakeNoMoreConnectionsThanThereMayBe) {
    auto hold = origin.server.hold({.path = "/x"});
    startMany(40, GetParam());
    ASSERT_TRUE(hold.waitUntilReached(connections));
    // One thread at a time loads: it would have opened another connection before this one.
    EXPECT_EQ(origin.load(origin.httpURL("/other")).data, "body");
    EXPECT_EQ(origin.server.openConnections(), connections + 1);
    EXPECT_EQ(origin.server.requests({.path = "/x"}).size(), connections);
    hold.release();
    for (const auto& result : loaded->wait(40)) EXPECT_EQ(result.data, "body");
}

TEST_P(TurnsOf, ComeToTheOthersWhenSomeAreCancelledWhileTheyWait) {
    auto hold = origin.server.hold({.path = "/x"});
    const auto tasks = startMany(60, GetParam());
    ASSERT_TRUE(hold.waitUntilReached(connections));
    for (std::size_t i = connections; i < tasks.size(); i += 2) tasks[i]->cancel();
    // The loader reads in order what it is told: it knows of the cancellations before this is done.
    EXPECT_EQ(origin.load(origin.httpURL("/other")).data, "body");
    hold.release();
    const auto results = loaded->wait(60);
    EXPECT_EQ(std::ranges::count(results, RKTError::NSURLErrorCancelled, &Loaded::code), 28);
    EXPECT_EQ(std::ranges::count(results, "body", &Loaded::data), 32);
    EXPECT_EQ(origin.server.requests({.path = "/x"}).size(), 32U);
}

INSTANTIATE_TEST_SUITE_P(, TurnsOf,
                         testing::Values(std::vector{"GET"}, std::vector{"POST"},
                                         std::vector{"GET", "POST"}),
                         [](const auto& tested) {
                             std::string name;
                             for (const auto* method : tested.param) name += method;
                             return name;
                         });

TEST_F(Turns, GoToTheNextWhenTheFirstIsCancelledBeforeItHasAConnection) {
    const auto gate = std::make_shared<emulator::Gate>();
    origin.server.disturb(emulator::ConnectionStage::ClientHello, RawAnswer().await(gate).close(),
                          1);
    const auto first = start("GET");
    ASSERT_TRUE(gate->waitForArrivals(1, std::chrono::seconds(20)));
    startMany(20, {"GET"});
    first->cancel();
    const auto results = loaded->wait(21);
    gate->open();
    EXPECT_EQ(std::ranges::count(results, "body", &Loaded::data), 20);
}

// Waiting for a turn is time without a byte, too.
TEST_F(Turns, ThatDoNotComeInTimeAreTimeouts) {
    origin.settings.timeoutIntervalForRequest = std::chrono::milliseconds(300);
    session = origin.session();
    auto hold = origin.server.hold({.path = "/x"});
    startMany(20, {"GET", "POST"});
    for (const auto& result : loaded->wait(20)) {
        EXPECT_EQ(result.code(), RKTError::NSURLErrorTimedOut);
    }
}

}  // namespace
