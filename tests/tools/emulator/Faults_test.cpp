#include "tools/korvogit-emulator/Faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "Client.h"
#include "tools/korvogit-emulator/Compression.h"
#include "tools/korvogit-emulator/Digest.h"
#include "tools/korvogit-emulator/Server.h"

namespace {

using emulator::Fault;
using emulator::Server;
using emulator_test::Client;
using emulator_test::End;
using emulator_test::get;
using emulator_test::Received;
using emulator_test::Tls;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using namespace std::chrono_literals;
namespace faults = emulator::faults;

class EmulatedFault : public testing::TestWithParam<bool> {
protected:
    EmulatedFault() {
        auto answer = emulator::textAnswer(200, body);
        answer.compressible = true;
        server.script({}, answer);
    }

    std::unique_ptr<Client> connect() {
        auto made = std::make_unique<Client>(GetParam() ? server.httpsPort() : server.httpPort());
        if (GetParam()) {
            EXPECT_TRUE(made->startTls(Tls{server.caFile()}));
        }
        return made;
    }

    /// Sends one request that does not keep the connection, and reads what comes of it.
    Received provoke(Fault fault, const std::string& headers = {}) {
        server.clearScripts();
        server.script({}, emulator::textAnswer(200, body));
        server.fault({}, std::move(fault));
        client = connect();
        client->send(get("/x", "Connection: close\r\n" + headers));
        return client->receiveAll();
    }

    static std::string bodyOf(const Received& received) {
        return received.bytes.substr(received.bytes.find("\r\n\r\n") + 4);
    }

    const std::string body = std::string(3000, 'a') + std::string(3000, 'b');
    const std::string firstHalf = body.substr(0, 3000);
    Server server;
    std::unique_ptr<Client> client;
};

INSTANTIATE_TEST_SUITE_P(OverHttpAndHttps, EmulatedFault, testing::Bool(),
                         [](const auto& tls) { return tls.param ? "Https" : "Http"; });

TEST_P(EmulatedFault, DelaysTheHeaders) {
    const auto before = std::chrono::steady_clock::now();
    const auto received = provoke(faults::delayBeforeHeaders(60ms));
    EXPECT_GE(std::chrono::steady_clock::now() - before, 60ms);
    EXPECT_EQ(bodyOf(received), body);
}

TEST_P(EmulatedFault, DelaysTheSecondHalfOfTheBody) {
    const auto before = std::chrono::steady_clock::now();
    const auto received = provoke(faults::delayInBody(60ms));
    EXPECT_GE(std::chrono::steady_clock::now() - before, 60ms);
    EXPECT_EQ(bodyOf(received), body);
}

TEST_P(EmulatedFault, ResetsAfterTheRequest) {
    const auto received = provoke(faults::resetAfterRequest());
    EXPECT_EQ(received.bytes, "");
    EXPECT_EQ(received.end, End::Reset);
    EXPECT_EQ(server.requestCount(), 1U);
}

TEST_P(EmulatedFault, ResetsInTheHeaders) {
    const auto received = provoke(faults::resetInHeaders());
    EXPECT_THAT(received.bytes,
                AllOf(StartsWith("HTTP/1.1 200 OK\r\n"), Not(HasSubstr("\r\n\r\n"))));
    EXPECT_EQ(received.end, End::Reset);
}

TEST_P(EmulatedFault, ResetsInTheBody) {
    const auto received = provoke(faults::resetInBody());
    EXPECT_THAT(received.bytes, HasSubstr("Content-Length: 6000\r\n"));
    EXPECT_EQ(bodyOf(received), firstHalf);
    EXPECT_EQ(received.end, End::Reset);
}

TEST_P(EmulatedFault, ClosesWithoutAnAnswer) {
    const auto received = provoke(faults::closeAfterRequest());
    EXPECT_EQ(received.bytes, "");
    EXPECT_EQ(received.end, End::Orderly);
}

TEST_P(EmulatedFault, ClosesInTheHeaders) {
    const auto received = provoke(faults::closeInHeaders());
    EXPECT_THAT(received.bytes, Not(HasSubstr("\r\n\r\n")));
    EXPECT_EQ(received.end, End::Orderly);
}

TEST_P(EmulatedFault, CutsTheBodyOff) {
    const auto received = provoke(faults::cutOffBody());
    EXPECT_THAT(received.bytes, HasSubstr("Content-Length: 6000\r\n"));
    EXPECT_EQ(bodyOf(received), firstHalf);
    EXPECT_EQ(received.end, End::Orderly);
}

TEST_P(EmulatedFault, LeavesOutTheLastChunk) {
    const auto received = provoke(faults::cutOffChunks());
    EXPECT_THAT(received.bytes, AllOf(HasSubstr("Transfer-Encoding: chunked\r\n"),
                                      Not(HasSubstr("Content-Length"))));
    EXPECT_EQ(bodyOf(received),
              "bb8\r\n" + firstHalf + "\r\nbb8\r\n" + std::string(3000, 'b') + "\r\n");
}

TEST_P(EmulatedFault, StaysSilentAtEachPlaceUntilTheClientLeaves) {
    const std::array silences{std::pair{faults::silenceAfterRequest(), std::string()},
                              std::pair{faults::silenceInHeaders(), std::string("HTTP/1.1 200")},
                              std::pair{faults::silenceInBody(), std::string("HTTP/1.1 200")}};
    for (const auto& [fault, start] : silences) {
        server.clearScripts();
        server.script({}, emulator::textAnswer(200, body));
        server.fault({}, fault);
        auto silent = connect();
        silent->send(get("/x"));
        EXPECT_EQ(silent->receiveExactly(start.size()), start);
        ASSERT_TRUE(server.waitForRequests(1));
        server.forgetRequests();
        EXPECT_EQ(server.openConnections(), 1U);
        silent->close();
        EXPECT_TRUE(server.waitForOpenConnections(0));
    }
}

TEST_P(EmulatedFault, SendsMoreThanItSaid) {
    const auto received = provoke(faults::bodyLongerThanSaid());
    EXPECT_THAT(received.bytes, HasSubstr("Content-Length: 6000\r\n"));
    EXPECT_EQ(bodyOf(received), body + "!!!!!!!!!!!!!!!!");
}

TEST_P(EmulatedFault, GivesLengthsThatAreNone) {
    EXPECT_THAT(provoke(faults::lengthNoNumber()).bytes, HasSubstr("\r\nContent-Length: many\r\n"));
    EXPECT_THAT(provoke(faults::twoLengths()).bytes,
                HasSubstr("Content-Length: 6000\r\nContent-Length: 3000\r\n"));
}

TEST_P(EmulatedFault, GivesChunkSizesThatAreNone) {
    EXPECT_THAT(bodyOf(provoke(faults::badChunkSize())), HasSubstr("a\r\nzzbb8\r\nb"));
    EXPECT_THAT(bodyOf(provoke(faults::hugeChunkSize())),
                HasSubstr("a\r\nffffffffffffffffff\r\nb"));
}

TEST_P(EmulatedFault, DamagesGzip) {
    const auto received = provoke(faults::badGzip());
    EXPECT_THAT(received.bytes, HasSubstr("Content-Encoding: gzip\r\n"));
    EXPECT_THAT(bodyOf(received), StartsWith("\x1f\x8b"));
    EXPECT_THROW(emulator::gunzip(bodyOf(received)), std::runtime_error);
}

TEST_P(EmulatedFault, SaysGzipOfAPlainBody) {
    const auto received = provoke(faults::noGzip());
    EXPECT_THAT(received.bytes, HasSubstr("Content-Encoding: gzip\r\n"));
    EXPECT_EQ(bodyOf(received), body);
}

TEST_P(EmulatedFault, CutsGzipInHalf) {
    const auto received = provoke(faults::truncatedGzip());
    const auto whole = emulator::gzip(body);
    EXPECT_EQ(bodyOf(received), whole.substr(0, whole.size() / 2));
    EXPECT_THAT(received.bytes,
                HasSubstr("Content-Length: " + std::to_string(whole.size() / 2) + "\r\n"));
}

TEST_P(EmulatedFault, SendsAGzipBomb) {
    const auto received = provoke(faults::gzipBombBody(40));
    EXPECT_LT(bodyOf(received).size(), 100'000U);
    EXPECT_EQ(emulator::gunzip(bodyOf(received)), std::string(40 << 20, ' '));
}

TEST_P(EmulatedFault, UsesOtherCodings) {
    EXPECT_THAT(provoke(faults::brotliBody()).bytes, HasSubstr("Content-Encoding: br\r\n"));
    const auto deflated = provoke(faults::deflateBody());
    EXPECT_THAT(deflated.bytes, HasSubstr("Content-Encoding: deflate\r\n"));
    EXPECT_EQ(bodyOf(deflated), emulator::zlibDeflate(body));
    const auto unknown = provoke(faults::unknownCoding());
    EXPECT_THAT(unknown.bytes, HasSubstr("Content-Encoding: x-nobody-knows\r\n"));
    EXPECT_EQ(bodyOf(unknown), body);
}

TEST_P(EmulatedFault, UnpacksBeforeItCodesAnew) {
    server.clearScripts();
    auto answer = emulator::textAnswer(200, body);
    answer.compressible = true;
    server.script({}, answer);
    server.fault({}, faults::deflateBody());
    client = connect();
    client->send(get("/x", "Accept-Encoding: gzip\r\nConnection: close\r\n"));
    const auto received = client->receiveAll();
    EXPECT_THAT(received.bytes, Not(HasSubstr("Content-Encoding: gzip")));
    EXPECT_EQ(bodyOf(received), emulator::zlibDeflate(body));
}

TEST_P(EmulatedFault, SendsHeaderLinesWithoutEnd) {
    server.fault({}, faults::endlessHeaders());
    client = connect();
    client->send(get("/x"));
    const auto received = client->receiveAll(5 << 20);
    EXPECT_GE(received.bytes.size(), std::size_t(5 << 20));
    EXPECT_THAT(received.bytes.substr(0, 60),
                StartsWith("HTTP/1.1 200 OK\r\nX-Endless: on and on\r\nX-Endless:"));
    client->close();
    EXPECT_TRUE(server.waitForOpenConnections(0));
}

TEST_P(EmulatedFault, SendsManyHeaderLinesAndThenTheAnswer) {
    const auto received = provoke(faults::manyHeaders(100'000));
    const auto head = received.bytes.substr(0, received.bytes.find("\r\n\r\n"));
    EXPECT_GT(head.size(), 100'000 * std::string("X-Many: a\r\n").size());
    EXPECT_EQ(bodyOf(received), body);
}

TEST_P(EmulatedFault, SendsALongHeaderLine) {
    const auto received = provoke(faults::longHeader(1 << 20));
    EXPECT_THAT(received.bytes, HasSubstr("X-Long: " + std::string(1 << 20, 'x') + "\r\n"));
    EXPECT_EQ(bodyOf(received), body);
}

TEST_P(EmulatedFault, GarblesTheStatusLine) {
    const auto received = provoke(faults::garbageStatusLine());
    EXPECT_THAT(received.bytes, StartsWith("\x01 this is no status line \xff\r\n"));
    EXPECT_EQ(bodyOf(received), body);
}

TEST_P(EmulatedFault, AnswersLikeHttp09) {
    EXPECT_EQ(provoke(faults::http09()).bytes, body);
}

TEST_P(EmulatedFault, SendsInterimAnswersFirst) {
    const auto bytes = provoke(faults::interimAnswers()).bytes;
    EXPECT_THAT(bytes,
                StartsWith("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: "));
    EXPECT_THAT(bytes, HasSubstr("\r\n\r\nHTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(bytes, EndsWith(body));
}

TEST_P(EmulatedFault, SendsInterimAnswersWithoutEnd) {
    server.fault({}, faults::endlessInterimAnswers());
    client = connect();
    client->send(get("/x"));
    const std::string once = "HTTP/1.1 100 Continue\r\n\r\n";
    EXPECT_THAT(client->receiveAll(1 << 20).bytes, StartsWith(once + once + once));
}

TEST_P(EmulatedFault, ChangesHeaders) {
    EXPECT_THAT(provoke(faults::noContentType()).bytes, Not(HasSubstr("Content-Type")));
    EXPECT_THAT(provoke(faults::setCookie()).bytes,
                HasSubstr("\r\nSet-Cookie: emulator=1; Path=/\r\n"));
}

TEST_P(EmulatedFault, RedirectsOnceWithEachStatus) {
    for (const unsigned status : {301U, 302U, 303U, 307U, 308U}) {
        server.clearScripts();
        server.script({}, emulator::textAnswer(200, body));
        server.fault({}, faults::redirectOnce(status));
        client = connect();
        client->send(get("/x?a=1"));
        const auto redirect = client->receive();
        EXPECT_EQ(redirect.status, status);
        EXPECT_EQ(redirect.header("Location"), "/x?a=1&redirected=1");
        client->send(get(*redirect.header("Location")));
        EXPECT_EQ(client->receive().body, body);
    }
}

TEST_P(EmulatedFault, RedirectsToWhereItShouldNot) {
    const auto location = [&](Fault fault) {
        server.clearScripts();
        server.script({}, emulator::textAnswer(200, body));
        server.fault({}, std::move(fault));
        auto asking = connect();
        asking->send(get("/x?a=1", {}, "api.github.com"));
        const auto redirect = asking->receive();
        EXPECT_EQ(redirect.status, 302U);
        return redirect.header("Location");
    };
    const std::string scheme = GetParam() ? "https" : "http";
    EXPECT_EQ(location(faults::redirectLoop()), "/x?a=1");
    EXPECT_EQ(location(faults::redirectToHttp()), "http://api.github.com/x?a=1");
    EXPECT_EQ(location(faults::redirectToOtherHost()), scheme + "://other.example.com/x?a=1");
    EXPECT_EQ(location(faults::redirectToFile()), "file:///etc/passwd");
    EXPECT_EQ(location(faults::redirectWithoutLocation()), std::nullopt);
    EXPECT_EQ(location(faults::redirectTo(302, "else")), "else");
}

TEST_P(EmulatedFault, SpoilsOnlyWhatMatchesAndOnlySoOften) {
    server.fault({.path = "/bad"}, faults::closeAfterRequest(), 1);
    client = connect();
    client->send(get("/good"));
    EXPECT_EQ(client->receive().body, body);
    client->send(get("/bad"));
    EXPECT_EQ(client->receiveAll().bytes, "");
    client = connect();
    client->send(get("/bad"));
    EXPECT_EQ(client->receive().body, body);
}

TEST_P(EmulatedFault, HoldsASpoiltAnswerBeforeItsFirstByte) {
    auto hold = server.hold({}, emulator::HoldStage::InBody);
    server.fault({}, faults::resetInBody());
    client = connect();
    client->send(get("/x"));
    ASSERT_TRUE(hold.waitUntilReached());
    hold.release();
    EXPECT_EQ(client->receiveAll().end, End::Reset);
}

TEST(EmulatorFaults, AreKnownByTheirNames) {
    EXPECT_GT(faults::names().size(), 40U);
    for (const auto& name : faults::names()) {
        EXPECT_TRUE(faults::named(name)) << name;
    }
    EXPECT_FALSE(faults::named("no-such-fault"));
}

TEST(EmulatorFaults, ComeWithTokensThatNameThem) {
    Server server;
    Client client(server.httpPort());
    const auto authorization = "User-Agent: t\r\nAuthorization: Basic " +
                               emulator::base64("any:fault-cut-off-body") + "\r\n";
    client.send(get("/api/v3/user", authorization));
    const auto received = client.receiveAll();
    EXPECT_THAT(received.bytes, HasSubstr("\"login\":\"octavia\""));
    EXPECT_THAT(received.bytes, Not(EndsWith("}")));
}

}  // namespace
