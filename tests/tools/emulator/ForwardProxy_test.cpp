#include "tools/korvogit-emulator/ForwardProxy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Client.h"
#include "tools/korvogit-emulator/Digest.h"
#include "tools/korvogit-emulator/Server.h"

namespace {

using emulator::ForwardProxy;
using emulator::Server;
using emulator_test::Client;
using emulator_test::End;
using emulator_test::get;
using emulator_test::Tls;
using testing::HasSubstr;
using testing::StartsWith;

std::string connectTo(const std::string& target, const std::string& headers = {}) {
    return "CONNECT " + target + " HTTP/1.1\r\nHost: " + target + "\r\n" + headers + "\r\n";
}

TEST(EmulatorForwardProxy, TunnelsTlsToARoutedHost) {
    Server server;
    server.script({.host = "api.github.com"}, emulator::textAnswer(200, "through"));
    ForwardProxy proxy;
    proxy.route("api.github.com:443", server.httpsPort());
    Client client(proxy.port());
    client.send(connectTo("api.github.com:443", "User-Agent: t\r\n"));
    EXPECT_EQ(client.receive(false).status, 200U);
    ASSERT_TRUE(client.startTls(Tls{server.caFile(), "api.github.com"}));
    client.send(get("/x", {}, "api.github.com"));
    EXPECT_EQ(client.receive().body, "through");
    const auto request = proxy.requests().at(0);
    EXPECT_EQ(request.method, "CONNECT");
    EXPECT_EQ(request.authority, "api.github.com:443");
    EXPECT_EQ(request.headers.get("user-agent"), "t");
}

TEST(EmulatorForwardProxy, ForwardsAPlainRequestWithoutItsOwnFields) {
    Server server;
    server.script({}, emulator::textAnswer(200, "plain"));
    ForwardProxy proxy;
    proxy.route("git.example.com:80", server.httpPort());
    Client client(proxy.port());
    client.send(
        "POST http://git.example.com/a?b HTTP/1.1\r\nHost: git.example.com\r\n"
        "Proxy-Authorization: Basic x\r\nProxy-Connection: keep-alive\r\nContent-Length: 4\r\n"
        "\r\nbody");
    const auto received = client.receiveAll();
    EXPECT_THAT(received.bytes, testing::EndsWith("\r\n\r\nplain"));
    const auto request = server.requests().at(0);
    EXPECT_EQ(request.target, "/a?b");
    EXPECT_EQ(request.body, "body");
    EXPECT_FALSE(request.headers.get("Proxy-Authorization"));
    EXPECT_FALSE(request.headers.get("Proxy-Connection"));
}

TEST(EmulatorForwardProxy, ReachesLoopbackButNothingElse) {
    Server server;
    ForwardProxy proxy;
    Client near(proxy.port());
    near.send(connectTo("localhost:" + std::to_string(server.httpPort())));
    EXPECT_EQ(near.receive(false).status, 200U);
    Client far(proxy.port());
    far.send(connectTo("example.com:443"));
    EXPECT_THAT(far.receiveAll().bytes, StartsWith("HTTP/1.1 502 Bad Gateway\r\n"));
}

TEST(EmulatorForwardProxy, Forbids) {
    ForwardProxy proxy(ForwardProxy::Behaviour::Forbid);
    Client client(proxy.port());
    client.send(connectTo("api.github.com:443"));
    EXPECT_THAT(client.receiveAll().bytes, StartsWith("HTTP/1.1 403 Forbidden\r\n"));
}

TEST(EmulatorForwardProxy, DemandsItsOwnCredentials) {
    Server server;
    ForwardProxy proxy(ForwardProxy::Behaviour::Authenticate);
    proxy.route("api.github.com:443", server.httpsPort());
    Client refused(proxy.port());
    refused.send(connectTo("api.github.com:443", "Proxy-Authorization: Basic eDp5\r\n"));
    const auto refusal = refused.receiveAll().bytes;
    EXPECT_THAT(refusal, StartsWith("HTTP/1.1 407 "));
    EXPECT_THAT(refusal, HasSubstr("\r\nProxy-Authenticate: Basic realm="));
    Client accepted(proxy.port());
    accepted.send(connectTo(
        "api.github.com:443",
        "Proxy-Authorization: Basic " +
            emulator::base64(ForwardProxy::user() + ":" + ForwardProxy::password()) + "\r\n"));
    EXPECT_EQ(accepted.receive(false).status, 200U);
}

TEST(EmulatorForwardProxy, Resets) {
    ForwardProxy proxy(ForwardProxy::Behaviour::Reset);
    Client client(proxy.port());
    client.send(connectTo("api.github.com:443"));
    EXPECT_EQ(client.receiveAll().end, End::Reset);
}

TEST(EmulatorForwardProxy, IsSilentUntilItEnds) {
    auto proxy = std::make_unique<ForwardProxy>(ForwardProxy::Behaviour::Silent);
    Client client(proxy->port());
    client.send(connectTo("api.github.com:443"));
    ASSERT_TRUE(proxy->waitForRequests(1));
    proxy.reset();
    EXPECT_EQ(client.receiveAll().bytes, "");
}

TEST(EmulatorForwardProxy, PassesAResetOfTheTargetOnAsAnEnd) {
    Server server;
    server.disturb(emulator::ConnectionStage::Accepted, emulator::RawAnswer().reset());
    ForwardProxy proxy;
    proxy.route("api.github.com:443", server.httpsPort());
    Client client(proxy.port());
    client.send(connectTo("api.github.com:443"));
    EXPECT_NE(client.receiveAll().end, End::TimedOut);
}

}  // namespace
