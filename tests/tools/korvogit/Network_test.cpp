#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using nlohmann::json;

class KorvogitNetwork : public KorvogitTest {
protected:
    /// The code of the error that validating with these arguments ends with.
    std::int64_t errorCode(const Arguments& arguments) const {
        const Ended ended = run(launch(Arguments{"validate", "--format", "json"} + arguments));
        EXPECT_EQ(ended.status, 1);
        return json::parse(ended.output).at("error").at("code").get<std::int64_t>();
    }

    Arguments enterprise(const std::string& url) const {
        return {"--service", "GitHubEnterprise",      "--user", "octavia", "--url", url,
                "--cacert",  server.caFile().string()};
    }

    std::string port() const { return std::to_string(server.httpsPort()); }
};

TEST_F(KorvogitNetwork, TrustsTheSystemsAuthoritiesUnlessToldOtherwise) {
    EXPECT_EQ(errorCode({"--service", "GitHub", "--connect-to",
                         "api.github.com:443:127.0.0.1:" + port()}),
              -1203);
    EXPECT_EQ(server.requestCount(), 0U);
}

TEST_F(KorvogitNetwork, ReportsAHostThatCannotBeReached) {
    EXPECT_EQ(errorCode({"--service", "GitHub", "--connect-to", "api.github.com:443:127.0.0.1:1"}),
              -1004);
}

TEST_F(KorvogitNetwork, EndsWhenNothingComesForTheGivenTime) {
    const auto hold = server.hold({.path = "/user"});
    EXPECT_EQ(errorCode(account() + Arguments{"--timeout", "0.2"}), -1001);
}

TEST_F(KorvogitNetwork, ConnectsToEachMappedAddress) {
    const Ended ended = run(launch(Arguments{"validate", "--connect-to", "one.example:1:[::1]:2",
                                             "--connect-to", "localhost:8443:127.0.0.1:" + port()} +
                                   enterprise("https://localhost:8443")));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(server.requests().at(0).authority, "localhost:8443");
}

TEST_F(KorvogitNetwork, MapsAnIPv6Address) {
    const Ended ended =
        run(launch(Arguments{"validate", "--connect-to", "[::1]:8443:127.0.0.1:" + port()} +
                   enterprise("https://[::1]:8443")));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(server.requests().at(0).authority, "[::1]:8443");
}

TEST_F(KorvogitNetwork, GoesThroughTheProxy) {
    emulator::ForwardProxy proxy;
    proxy.route("api.github.com:443", server.httpsPort());
    const Ended ended = run(launch({"validate", "--service", "GitHub", "--user", "octavia",
                                    "--cacert", server.caFile().string(), "--proxy", proxy.url()}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(proxy.requests().at(0).target, "api.github.com:443");
}

TEST_F(KorvogitNetwork, TakesTheProxysSchemeInAnyLetterCase) {
    emulator::ForwardProxy proxy;
    proxy.route("api.github.com:443", server.httpsPort());
    const Ended ended =
        run(launch({"validate", "--service", "GitHub", "--user", "octavia", "--cacert",
                    server.caFile().string(), "--proxy", "HTTP" + proxy.url().substr(4)}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(proxy.requests().at(0).target, "api.github.com:443");
}

}  // namespace
