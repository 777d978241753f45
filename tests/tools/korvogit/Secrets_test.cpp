#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* secret = "hunter2-of-nobody";

class KorvogitSecrets : public KorvogitTest {
protected:
    /// Validates with this standard input.
    Ended validateWithInput(std::string input) {
        Launch launch = commandLine(Arguments{"validate", "--token-stdin"} + account());
        launch.input = std::move(input);
        return run(launch);
    }

    std::string sentToken() const {
        const auto authorization = server.requests().at(0).headers.get("Authorization").value();
        const auto text =
            emulator::base64Decoded(authorization.substr(std::string("Basic ").size()));
        return text.substr(std::string("octavia:").size());
    }
};

void expectNothingToldIn(const Ended& ended) {
    for (const std::string& text : {ended.output, ended.error}) {
        EXPECT_THAT(text, Not(HasSubstr(secret)));
        EXPECT_THAT(text, Not(HasSubstr(emulator::base64(std::string("octavia:") + secret))));
    }
}

TEST_F(KorvogitSecrets, AreTheFirstLineOfStandardInputWithoutItsEnd) {
    for (const char* input : {"demo-token-octavia\n", "demo-token-octavia\r\n",
                              "demo-token-octavia", "demo-token-octavia\nanother\r\n\n"}) {
        server.forgetRequests();
        EXPECT_EQ(validateWithInput(input).status, 0);
        EXPECT_EQ(sentToken(), "demo-token-octavia");
    }
}

TEST_F(KorvogitSecrets, KeepTheBlanksAroundThem) {
    validateWithInput(" a b \n");
    EXPECT_EQ(sentToken(), " a b ");
}

TEST_F(KorvogitSecrets, MayBeEmpty) {
    EXPECT_EQ(validateWithInput("\n").status, 1);
    EXPECT_EQ(sentToken(), "");
}

TEST_F(KorvogitSecrets, OfStandardInputComeBeforeThoseOfTheEnvironment) {
    Launch both = launch(Arguments{"validate", "--token-stdin"} + account());
    both.environment["KORVOGIT_TOKEN"] = secret;
    both.input = "demo-token-octavia\n";
    EXPECT_EQ(run(both).status, 0);
}

TEST_F(KorvogitSecrets, WithALineEndOrNulInsideAreRefused) {
    using namespace std::string_literals;
    for (const std::string& input : {secret + "\rx\n"s, secret + "\0x\n"s, secret + "\r"s}) {
        const Ended ended = validateWithInput(input);
        EXPECT_EQ(ended.status, 2);
        EXPECT_THAT(ended.error, HasSubstr("The token from standard input has a line end"));
        expectNothingToldIn(ended);
    }
    for (const char* end : {"\nx", "\rx", "\n"}) {
        Launch launch = commandLine(Arguments{"validate"} + account());
        launch.environment["KORVOGIT_TOKEN"] = std::string(secret) + end;
        const Ended ended = run(launch);
        EXPECT_EQ(ended.status, 2);
        EXPECT_THAT(ended.error, HasSubstr("The token from KORVOGIT_TOKEN has a line end"));
        expectNothingToldIn(ended);
    }
    EXPECT_EQ(server.requestCount(), 0U);
}

TEST_F(KorvogitSecrets, AreMissedWhenStandardInputIsEmpty) {
    const Ended ended = validateWithInput("");
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(
        ended.error,
        "korvogit: There is no token on standard input.\n"
        "  Nothing was sent. A secret is one line of text; see 'korvogit --help' for where it "
        "comes from.\n");
}

TEST_F(KorvogitSecrets, AreNotReadWithoutEnd) {
    const Ended ended = validateWithInput(std::string(1 << 20, 'x'));
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.error, HasSubstr("too long for a token"));
}

TEST_F(KorvogitSecrets, AreNotTakenFromArgumentsNorRepeated) {
    for (const Arguments& wrong :
         {Arguments{"--token", secret}, Arguments{std::string("--token=") + secret}}) {
        const Ended ended = run(commandLine(Arguments{"validate"} + account() + wrong));
        EXPECT_EQ(ended.status, 2);
        EXPECT_THAT(ended.error, HasSubstr("There is no such option: --token."));
        EXPECT_THAT(ended.error, HasSubstr("KORVOGIT_TOKEN or with --token-stdin"));
        expectNothingToldIn(ended);
    }
    for (const Arguments& wrong :
         {Arguments{secret}, Arguments{std::string("-t") + secret},
          Arguments{std::string("--token-stdin=") + secret},
          Arguments{"--url", std::string("https://me:") + secret + "@a b"},
          Arguments{"--proxy", std::string("ftp://me:") + secret + "@proxy"}}) {
        const Ended ended = run(commandLine(Arguments{"validate"} + account() + wrong));
        EXPECT_EQ(ended.status, 2);
        expectNothingToldIn(ended);
    }
}

TEST_F(KorvogitSecrets, StandInNoErrorOfAServiceOrOfTheNetwork) {
    using namespace emulator;
    const auto check = [this] {
        for (const char* format : {"table", "json"}) {
            Launch launch = commandLine(Arguments{"repositories", "--format", format} + account());
            launch.environment["KORVOGIT_TOKEN"] = secret;
            const Ended ended = run(launch);
            EXPECT_EQ(ended.status, 1);
            expectNothingToldIn(ended);
        }
        server.clearScripts();
    };
    check();
    server.fault({}, faults::resetAfterRequest());
    check();
    server.script({}, textAnswer(502, "<html>Bad Gateway</html>"));
    check();
    server.fault({}, faults::redirectToOtherHost());
    check();
    server.fault({}, faults::badGzip());
    check();
}

}  // namespace
