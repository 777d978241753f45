#include "tools/korvogit-emulator/RawAnswer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Client.h"
#include "tools/korvogit-emulator/Server.h"

namespace {

using emulator::RawAnswer;
using emulator::Server;
using emulator_test::Client;
using emulator_test::End;
using emulator_test::get;
using emulator_test::Tls;

TEST(EmulatorRawAnswer, SendsRawStepsAsTheyStand) {
    Server server;
    server.script({}, RawAnswer().send("any").send("thing", 3).close());
    for (const bool tls : {false, true}) {
        Client client(tls ? server.httpsPort() : server.httpPort());
        if (tls) {
            ASSERT_TRUE(client.startTls(Tls{server.caFile()}));
        }
        client.send(get("/"));
        const auto received = client.receiveAll();
        EXPECT_EQ(received.bytes, "anythingthingthing");
        EXPECT_EQ(received.end, End::Orderly);
    }
}

TEST(EmulatorRawAnswer, CutsOffWithoutCloseNotify) {
    Server server;
    server.script({}, RawAnswer().send("some").cutOff());
    Client client(server.httpsPort(), Tls{server.caFile()});
    client.send(get("/"));
    const auto received = client.receiveAll();
    EXPECT_EQ(received.bytes, "some");
    EXPECT_EQ(received.end, End::CutOff);
}

TEST(EmulatorRawAnswer, DeliversWhatCameBeforeAReset) {
    Server server;
    const std::string big(3 << 20, 'b');
    server.script({}, RawAnswer().send(big).reset());
    for (const bool tls : {false, true}) {
        Client client(tls ? server.httpsPort() : server.httpPort());
        if (tls) {
            ASSERT_TRUE(client.startTls(Tls{server.caFile()}));
        }
        client.send(get("/"));
        const auto received = client.receiveAll();
        EXPECT_EQ(received.bytes.size(), big.size());
        EXPECT_EQ(received.end, End::Reset);
    }
}

TEST(EmulatorRawAnswer, KeepsTheConnectionAfterARawAnswerThatSaysSo) {
    Server server;
    server.script({.path = "/raw"},
                  RawAnswer().send("HTTP/1.1 204 No Content\r\n\r\n").keepAlive());
    server.script({}, emulator::textAnswer(200, "next"));
    Client client(server.httpPort());
    client.send(get("/raw"));
    EXPECT_EQ(client.receive().status, 204U);
    client.send(get("/"));
    EXPECT_EQ(client.receive().body, "next");
}

}  // namespace
