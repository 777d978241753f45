#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Korvogit.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr const char* escape = "\x1b";

class KorvogitTerminal : public KorvogitTest {
protected:
    Launch onTerminal(Arguments arguments, unsigned short columns = 80) const {
        Launch onTerminal = launch(std::move(arguments));
        onTerminal.terminalColumns = columns;
        return onTerminal;
    }

    Ended listOnTerminal(const Arguments& more, unsigned short columns = 80) const {
        return run(onTerminal(Arguments{"repositories"} + account() + more, columns));
    }
};

TEST_F(KorvogitTerminal, ShowsColours) {
    EXPECT_THAT(listOnTerminal({"--per-page", "1"}).output, HasSubstr("\x1b[1mNAME\x1b[0m"));
}

TEST_F(KorvogitTerminal, ShowsNoColoursWhereTheyAreNotWanted) {
    const std::pair<const char*, const char*> variables[] = {{"NO_COLOR", "1"}, {"TERM", "dumb"}};
    for (const auto& [name, value] : variables) {
        Launch launch = onTerminal(Arguments{"repositories", "--per-page", "1"} + account());
        launch.environment[name] = value;
        const Ended ended = run(launch);
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.output, AllOf(HasSubstr("NAME"), Not(HasSubstr("\x1b[1m"))));
    }
}

TEST_F(KorvogitTerminal, ShortensTheLastColumnToItsWidth) {
    answerListings(
        R"([{"full_name": "o/n", "description": "日本語の長い説明です。まだ続きます。"}])");
    // 18 columns are left for it, and a wide character that would need a 19th stays out.
    EXPECT_THAT(listOnTerminal({}, 65).output, HasSubstr("  日本語の長い説明…\r\n"));
    EXPECT_THAT(listOnTerminal({}, 200).output, HasSubstr("まだ続きます。\r\n"));
}

TEST_F(KorvogitTerminal, IsNotSteeredByAService) {
    const std::string evil = R"(\u001b[31mred\u0007\u009b2J\u202ecod\u007f)";
    answerListings(R"([{"full_name": ")" + evil + R"(", "description": ")" + evil + R"("}])");
    for (const char* format : {"table", "json", "csv"}) {
        Launch launch = onTerminal(Arguments{"repositories", "--format", format} + account(), 300);
        launch.environment["NO_COLOR"] = "1";
        const Ended ended = run(launch);
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.output, HasSubstr("\\u001b[31mred"));
        EXPECT_THAT(ended.output, HasSubstr("\\u009b2J\\u202ecod\\u007f"));
        for (const char* control : {escape, "\x07", "\x7f", "\u009b", "\u202e"}) {
            EXPECT_THAT(ended.output, Not(HasSubstr(control))) << format;
        }
    }
}

TEST_F(KorvogitTerminal, IsNotSteeredByAServicesError) {
    server.script({}, emulator::jsonAnswer(403, R"({"message": "no\u001b]0;title\u0007\nmore"})"));
    const Ended ended = validate();
    EXPECT_THAT(ended.error,
                testing::StartsWith("korvogit: GitHub answered with status 403 (Forbidden).\n"
                                    "  no\\u001b]0;title\\u0007\\nmore\n"));
}

TEST_F(KorvogitTerminal, ShowsASpinnerUntilTheAnswerComes) {
    auto hold = server.hold({});
    Program program(onTerminal(Arguments{"validate"} + account()));
    program.waitUntilShown("\r⠋ Asking GitHub\r⠙ Asking GitHub");
    hold.release();
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, EndsWith("Asking GitHub\r\x1b[KGitHub accepts the credentials.\r\n"));
}

TEST_F(KorvogitTerminal, IsWaitedForWhereItRefusesWhatIsTooMuch) {
    nlohmann::json page;
    for (int id = 0; id < 1000; ++id) page.push_back({{"id", id}});
    answerListings(page.dump());
    Launch launch = onTerminal(Arguments{"repositories", "--format", "jsonl"} + account());
    launch.terminalNeverBlocks = true;
    Program program(launch);
    program.waitUntilShown("\"identifier\"");
    program.waitUntilAsleep();  // more than a terminal holds is left to write
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(std::ranges::count(ended.output, '\n'), 1000);
}

TEST_F(KorvogitTerminal, GetsNoSpinnerThatWraps) {
    auto hold = server.hold({});
    Launch launch = onTerminal(Arguments{"validate"} + account());
    launch.terminalColumns = 12;
    Program program(launch);
    program.waitUntilShown("\r⠋ Asking G…\r⠙ Asking G…");
    hold.release();
    EXPECT_EQ(program.wait().status, 0);
}

TEST_F(KorvogitTerminal, ShowsAnASCIISpinnerWhereTheLocaleHasNothingElse) {
    auto hold = server.hold({});
    Launch launch = onTerminal(Arguments{"validate"} + account());
    launch.environment["LC_ALL"] = "C";
    Program program(launch);
    program.waitUntilShown("\r| Asking GitHub\r/ Asking GitHub");
    hold.release();
    EXPECT_EQ(program.wait().status, 0);
}

TEST_F(KorvogitTerminal, ShowsNoSpinnerBesideJSON) {
    server.fault({}, emulator::faults::delayBeforeHeaders(std::chrono::milliseconds(400)));
    const Ended ended = run(onTerminal(Arguments{"validate", "--format", "json"} + account()));
    EXPECT_EQ(ended.output, "{\r\n  \"error\": null\r\n}\r\n");
}

TEST_F(KorvogitTerminal, AsksForTheTokenAndDoesNotShowIt) {
    Launch launch = onTerminal(Arguments{"validate", "--token-stdin"} + account());
    launch.environment.erase("KORVOGIT_TOKEN");
    Program program(launch);
    program.waitUntilShown("Token: ");
    program.type("demo-token-octavia\n");
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, AllOf(HasSubstr("accepts"), Not(HasSubstr("demo-token"))));
    EXPECT_TRUE(ended.terminalEchoes);
}

TEST_F(KorvogitTerminal, EchoesAgainAfterAnInterruptedQuestion) {
    Program program(onTerminal(Arguments{"validate", "--token-stdin"} + account()));
    program.waitUntilShown("Token: ");
    program.type("half\x03");
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 130);
    EXPECT_TRUE(ended.terminalEchoes);
    EXPECT_EQ(server.requestCount(), 0U);
}

TEST_F(KorvogitTerminal, GetsAHintWhenThereIsNoSecret) {
    Launch launch = onTerminal(Arguments{"validate"} + account());
    launch.environment.erase("KORVOGIT_TOKEN");
    EXPECT_THAT(run(launch).output, HasSubstr("hint: there is no secret"));
}

}  // namespace
