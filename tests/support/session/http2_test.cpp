// Loading over HTTP/2, as the public services speak it.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string>

#include "support/session/RequestHeaders.h"
#include "tests/helpers/HTTP2Front.h"
#include "tests/helpers/Loading.h"

namespace {

class HTTP2 : public testing::Test {
protected:
    Origin origin;
    emulator::CertificateAuthority authority;
    HTTP2Front front{authority, origin.server.httpPort()};

    HTTP2() {
        origin.settings.certificateAuthorityFile = authority.file().string();
        for (auto& mapping : origin.settings.hostMappings) mapping.addressPort = front.port();
    }
};

TEST_F(HTTP2, FindsHeadersThatCameInLowerCase) {
    auto answer = emulator::jsonAnswer(200, "[]");
    answer.headers.add("Link", R"(<https://api.github.com/x?page=2>; rel="next")");
    origin.server.script({.path = "/x"}, answer);
    const Loaded loaded = origin.load("https://api.github.com/x");
    ASSERT_FALSE(loaded.error) << loaded.error->localizedDescription();
    EXPECT_EQ(loaded.data, "[]");
    EXPECT_EQ(loaded.response->valueForHTTPHeaderField("Link"),
              R"(<https://api.github.com/x?page=2>; rel="next")");
    const auto& headers = loaded.response->allHeaderFields();
    EXPECT_TRUE(std::ranges::any_of(headers, [](const auto& field) {
        return field.first == "link";
    })) << "the answer did not come over HTTP/2";
}

// In HTTP/2 the limit of the libraries underneath is lower than in HTTP/1.1. Cookies come on top.
TEST_F(HTTP2, TheLongestRequestsCanBeSentAndLongerOnesAreRefused) {
    constexpr std::size_t each = 32;  // counts for a field besides its bytes
    auto answer = emulator::textAnswer(200, "read");
    for (const char* name : {"a", "b", "c"})
        answer.headers.add("Set-Cookie", name + ("=" + std::string(2700, 'c')));
    origin.server.script({.path = "/x"}, answer);
    const auto session = origin.session();
    const auto load = [&](const RKTURLRequest& request) {
        const auto loaded = std::make_shared<Awaited<Loaded>>();
        Origin::task(*session, request, loaded)->resume();
        return loaded->first();
    };
    const auto plain = requestTo("https://api.github.com/x");
    const auto left = rkt::maximumRequestHeadBytes - plain.URL()->absoluteString().size();

    auto withOne = plain;
    auto withMany = plain;
    const auto setToken = [&](std::size_t length) {
        withOne.setValue(std::string(length, 't'), "X-Token");
    };
    const auto length = left - each - std::string("X-Token").size();
    setToken(length);
    for (std::size_t i = 0; i < left / (each + 6); ++i)
        withMany.setValue("v", "X" + std::to_string(10'000 + i).substr(1));
    for (const auto& request : {plain, withOne, plain, withMany, plain}) {
        EXPECT_EQ(load(request).data, "read");
    }
    setToken(length + 1);
    EXPECT_EQ(load(withOne).code(), RKTError::NSURLErrorBadURL);
    std::set<std::optional<std::string>> connections;
    for (const auto& request : origin.server.requests())
        connections.insert(request.headers.get("Forwarded"));
    EXPECT_EQ(connections.size(), 1U);
}

TEST_F(HTTP2, ManyRequestsOfManySessionsShareOneConnection) {
    constexpr int count = 60;
    // All are under way at once: none is answered until all have arrived. HTTP/1.1 would need as
    // many connections.
    auto hold = origin.server.hold({.path = "/x"});
    origin.server.script({.path = "/x"}, emulator::textAnswer(200, "together"));
    const auto loaded = std::make_shared<Awaited<Loaded>>();
    for (int i = 0; i < count; ++i) {
        Origin::task(*origin.session(), requestTo("https://api.github.com/x"), loaded)->resume();
    }
    ASSERT_TRUE(hold.waitUntilReached(count));
    hold.release();
    for (const auto& result : loaded->wait(count)) EXPECT_EQ(result.data, "together");
    std::set<std::optional<std::string>> connections;
    for (const auto& request : origin.server.requests()) {
        connections.insert(request.headers.get("Forwarded"));
    }
    EXPECT_EQ(connections.size(), 1U);
    EXPECT_FALSE(connections.contains(std::nullopt));
}

TEST_F(HTTP2, CancellingOneStreamLeavesTheOthersAlone) {
    auto hold = origin.server.hold({.path = "/held"});
    origin.server.script({}, emulator::textAnswer(200, "body"));
    const auto session = origin.session();
    const auto cancelled = std::make_shared<Awaited<Loaded>>();
    const auto others = std::make_shared<Awaited<Loaded>>();
    const auto task = Origin::task(*session, requestTo("https://api.github.com/held"), cancelled);
    task->resume();
    ASSERT_TRUE(hold.waitUntilReached());
    for (int i = 0; i < 10; ++i) {
        Origin::task(*session, requestTo("https://api.github.com/x"), others)->resume();
    }
    task->cancel();
    EXPECT_EQ(cancelled->first().code(), RKTError::NSURLErrorCancelled);
    for (const auto& result : others->wait(10)) EXPECT_EQ(result.data, "body");
}

TEST_F(HTTP2, AConnectionThatDiesFailsEveryRequestOnItOnce) {
    constexpr std::size_t count = 20;
    auto hold = origin.server.hold({.path = "/held"});
    const auto session = origin.session();
    const auto loaded = std::make_shared<Awaited<Loaded>>();
    for (std::size_t i = 0; i < count; ++i) {
        Origin::task(*session, requestTo("https://api.github.com/held"), loaded)->resume();
    }
    ASSERT_TRUE(hold.waitUntilReached(count));
    front.end();
    // Those that shared the connection may be tried again, where nobody listens any more. The
    // system closes a killed process's sockets in no order of ours: when the listening one goes
    // last, it still takes the new connection, which then ends before its handshake does.
    const std::set<std::int64_t> expected = {RKTError::NSURLErrorNetworkConnectionLost,
                                             RKTError::NSURLErrorCannotConnectToHost,
                                             RKTError::NSURLErrorSecureConnectionFailed};
    for (const auto& result : loaded->wait(count)) {
        EXPECT_TRUE(expected.contains(result.code())) << result.code();
    }
    drain(*session->delegateQueue());
    EXPECT_EQ(loaded->count(), count);
}

TEST_F(HTTP2, APageOfRepositoriesComesInflated) {
    auto request = requestTo("https://api.github.com/user/repos?per_page=100");
    request.setValue("Bearer demo-token-octavia", "Authorization");
    const Loaded loaded = origin.load(request);
    ASSERT_FALSE(loaded.error);
    EXPECT_EQ(loaded.response->valueForHTTPHeaderField("Content-Encoding"), "gzip");
    EXPECT_TRUE(loaded.data->starts_with("["));
}

}  // namespace
