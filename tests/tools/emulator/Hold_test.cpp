#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Client.h"
#include "tools/korvogit-emulator/Server.h"

namespace {

using emulator::HoldStage;
using emulator::Server;
using emulator_test::Client;
using emulator_test::get;
using emulator_test::Tls;
using testing::HasSubstr;
using namespace std::chrono_literals;

TEST(EmulatorHold, HoldsAnAnswerBeforeItsHeaders) {
    Server server;
    server.script({}, emulator::textAnswer(200, "held"));
    auto hold = server.hold({.path = "/h"});
    Client held(server.httpPort());
    held.send(get("/h"));
    ASSERT_TRUE(hold.waitUntilReached());
    Client other(server.httpPort());
    other.send(get("/other"));
    EXPECT_EQ(other.receive().body, "held");
    hold.release();
    EXPECT_EQ(held.receive().body, "held");
}

TEST(EmulatorHold, HoldsAnAnswerAfterItsHeaders) {
    Server server;
    server.script({}, emulator::textAnswer(200, "0123456789"));
    auto hold = server.hold({}, HoldStage::AfterHeaders);
    Client client(server.httpsPort(), Tls{server.caFile()});
    client.send(get("/"));
    EXPECT_THAT(client.receive(false).head, HasSubstr("Content-Length: 10"));
    ASSERT_TRUE(hold.waitUntilReached());
    hold.release();
    EXPECT_EQ(client.receiveExactly(10), "0123456789");
}

TEST(EmulatorHold, HoldsAnAnswerInItsBody) {
    Server server;
    server.script({}, emulator::textAnswer(200, "0123456789"));
    auto hold = server.hold({}, HoldStage::InBody);
    Client client(server.httpPort());
    client.send(get("/"));
    client.receive(false);
    EXPECT_EQ(client.receiveExactly(5), "01234");
    ASSERT_TRUE(hold.waitUntilReached());
    hold.release();
    EXPECT_EQ(client.receiveExactly(5), "56789");
}

TEST(EmulatorHold, CountsHowManyAnswersAreHeld) {
    Server server;
    server.script({}, emulator::textAnswer(200, ""));
    auto hold = server.hold({});
    Client first(server.httpPort());
    Client second(server.httpPort());
    first.send(get("/"));
    second.send(get("/"));
    EXPECT_TRUE(hold.waitUntilReached(2));
    EXPECT_FALSE(hold.waitUntilReached(3, 1ms));
}

TEST(EmulatorHold, LetsGoWhenTheHoldEnds) {
    Server server;
    server.script({}, emulator::textAnswer(200, "free"));
    Client client(server.httpPort());
    {
        auto hold = server.hold({});
        client.send(get("/"));
        ASSERT_TRUE(hold.waitUntilReached());
    }
    EXPECT_EQ(client.receive().body, "free");
}

TEST(EmulatorHold, ClosesAHeldConnectionWhoseClientLeaves) {
    Server server;
    auto hold = server.hold({});
    for (const bool tls : {false, true}) {
        Client client(tls ? server.httpsPort() : server.httpPort());
        if (tls) {
            ASSERT_TRUE(client.startTls(Tls{server.caFile()}));
        }
        client.send(get("/"));
        ASSERT_TRUE(hold.waitUntilReached(tls ? 2 : 1));
        client.close();
        EXPECT_TRUE(server.waitForOpenConnections(0));
    }
}

}  // namespace
