#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "Korvogit.h"

namespace {

using nlohmann::json;

class KorvogitInterruption : public KorvogitTest {
protected:
    /// Sends the signal once the request has arrived, and does not answer.
    Ended interrupt(const std::string& subcommand, int signal, const Arguments& more = {}) {
        auto hold = server.hold({});
        Program program(launch(Arguments{subcommand} + account() + more));
        EXPECT_TRUE(hold.waitUntilReached());
        program.signal(signal);
        Ended ended = program.wait();
        // Nothing is left of the request when its program is gone.
        EXPECT_TRUE(server.waitForOpenConnections(0));
        return ended;
    }
};

TEST_F(KorvogitInterruption, CancelsAndEndsWithStatus130) {
    for (const char* subcommand : {"validate", "repositories"}) {
        const Ended ended = interrupt(subcommand, SIGINT);
        EXPECT_EQ(ended.status, 130);
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.error, testing::StartsWith("korvogit: The request was cancelled.\n"));
    }
}

TEST_F(KorvogitInterruption, PrintsTheCancelledTasksErrorAsJSON) {
    const Ended validated = interrupt("validate", SIGINT, {"--format", "json"});
    EXPECT_EQ(validated.status, 130);
    EXPECT_EQ(json::parse(validated.output).at("error").at("code"), -999);
    EXPECT_EQ(json::parse(validated.output).at("error").at("domain"), "NSURLErrorDomain");

    const Ended listed = interrupt("repositories", SIGINT, {"--format", "json"});
    EXPECT_EQ(listed.status, 130);
    EXPECT_EQ(json::parse(listed.output).at("error").at("code"), -999);
    EXPECT_EQ(json::parse(listed.output).at("results"), nullptr);
}

TEST_F(KorvogitInterruption, BySIGTERMEndsWithItsStatus) {
    EXPECT_EQ(interrupt("validate", SIGTERM).status, 143);
}

TEST_F(KorvogitInterruption, ComesFromTheTerminalsKeyToo) {
    auto hold = server.hold({});
    Launch onTerminal = launch(Arguments{"validate"} + account());
    onTerminal.terminalColumns = 80;
    Program program(onTerminal);
    ASSERT_TRUE(hold.waitUntilReached());
    program.type("\x03");
    EXPECT_EQ(program.wait().status, 130);
}

}  // namespace
