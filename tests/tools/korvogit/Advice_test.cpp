// What stands below an error's sentence: what is not the reason, and what to do next.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class KorvogitAdvice : public KorvogitTest {
protected:
    /// What stands below the sentence, when validating ends with an error.
    std::string below(const Arguments& more) const {
        const Ended ended = run(launch(Arguments{"validate"} + more));
        EXPECT_EQ(ended.status, 1);
        EXPECT_THAT(ended.error, StartsWith("korvogit: "));
        return ended.error.substr(ended.error.find('\n') + 1);
    }

    std::string belowStatus(unsigned status) {
        server.clearScripts();
        server.script({.path = "/user"}, emulator::jsonAnswer(status, "{}"));
        return below(account());
    }

    std::string belowFault(const std::string& name) {
        server.clearScripts();
        server.fault({}, emulator::faults::named(name).value());
        return below(account());
    }

    Arguments enterprise(const std::string& url) const {
        return {"--service", "GitHubEnterprise",      "--user", "octavia", "--url", url,
                "--cacert",  server.caFile().string()};
    }
};

TEST_F(KorvogitAdvice, OfARefusalSaysThatTheNetworkWorks) {
    EXPECT_THAT(belowStatus(401), AllOf(HasSubstr("Network and address work"),
                                        HasSubstr("Check the token"), HasSubstr("--user")));
    EXPECT_THAT(belowStatus(403), AllOf(HasSubstr("Network and address work"), HasSubstr("scope"),
                                        HasSubstr("single sign-on")));
    EXPECT_THAT(belowStatus(404), AllOf(HasSubstr("network works"), HasSubstr("Check --url")));
    EXPECT_THAT(belowStatus(422), AllOf(HasSubstr("network works"), HasSubstr("--sort")));
}

TEST_F(KorvogitAdvice, OfAServiceInTroubleSaysThatTheCredentialsAreNotTheReason) {
    EXPECT_THAT(belowStatus(410), HasSubstr("the service has given this up"));
    EXPECT_THAT(belowStatus(429), AllOf(HasSubstr("credentials are not"), HasSubstr("Wait")));
    for (const unsigned status : {500U, 502U, 503U}) {
        EXPECT_THAT(belowStatus(status),
                    AllOf(HasSubstr("Neither the credentials"), HasSubstr("Try again later")));
    }
}

TEST_F(KorvogitAdvice, OfAnAnswerThatIsNoJSONLooksAtTheAddress) {
    server.script({}, emulator::textAnswer(200, "<html>Sign in</html>"));
    EXPECT_THAT(below(account()), AllOf(HasSubstr("The network works"), HasSubstr("Check --url")));
}

TEST_F(KorvogitAdvice, OfAConnectionThatFailedSaysThatTheTokenWasNotSent) {
    const auto port = std::to_string(server.httpsPort());
    EXPECT_THAT(below(enterprise("https://localhost:1")),
                AllOf(HasSubstr("The token was not sent"), HasSubstr("--proxy")));
    EXPECT_THAT(below(enterprise("https://nowhere.invalid")),
                AllOf(HasSubstr("The token was not sent"), HasSubstr("spelling")));
    EXPECT_THAT(
        below({"--service", "GitHub", "--connect-to", "api.github.com:443:127.0.0.1:" + port}),
        AllOf(HasSubstr("The token was not sent"), HasSubstr("--cacert FILE")));
    EXPECT_EQ(server.requestCount(), 0U);
}

TEST_F(KorvogitAdvice, OfACertificateThatIsOverLooksAtTheClock) {
    server.presentCertificate(emulator::Leaf::Expired);
    EXPECT_THAT(below(account()), HasSubstr("clock"));
}

TEST_F(KorvogitAdvice, OfABrokenTransferSaysThatTheCredentialsWereNotRefused) {
    for (const char* fault : {"reset-in-body", "close-in-headers", "bad-gzip", "redirect-loop"}) {
        EXPECT_THAT(belowFault(fault), HasSubstr("The credentials were not refused.")) << fault;
    }
    const auto hold = server.hold({.path = "/user"});
    EXPECT_THAT(below(account() + Arguments{"--timeout", "0.2"}), HasSubstr("--timeout SECONDS"));
}

TEST_F(KorvogitAdvice, OfAMissingAddressNamesTheOption) {
    EXPECT_THAT(below({"--service", "GitLabSelfHosted"}),
                HasSubstr("Nothing was sent. Give the server's address with --url"));
}

}  // namespace
