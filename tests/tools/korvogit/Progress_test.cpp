// What a terminal shows while "korvogit repositories --all" walks.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class KorvogitProgress : public KorvogitTest {
protected:
    /// All of octavia's, 50 on a page, in so many columns.
    Launch listAll(const Arguments& more = {}, unsigned short columns = 80) const {
        Launch launched =
            launch(Arguments{"repositories", "--all", "--per-page", "50"} + account() + more);
        launched.terminalColumns = columns;
        return launched;
    }

    emulator::Hold holdPage(const std::string& number) {
        return server.hold({.also = [number](const emulator::Request& request) {
            return request.queryValue("page") == number;
        }});
    }
};

TEST_F(KorvogitProgress, TellsPagesAndRepositoriesAndTheTotal) {
    auto hold = holdPage("2");
    Program program(listAll());
    program.waitUntilShown("━━━━━━━━╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌  page 1 of 3, 50 repositories");
    hold.release();
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, HasSubstr("page 2 of 3, 100 repositories"));
    EXPECT_THAT(ended.output, Not(HasSubstr("page 3 of 3")));
    EXPECT_THAT(ended.output, EndsWith("137 repositories\x1b[0m\r\n"));
}

TEST_F(KorvogitProgress, HasNoBarWhereTheTotalIsNotTold) {
    Launch launched = launch({"repositories", "--all", "--per-page", "100", "--service",
                              "BitbucketServer", "--user", "octavia", "--url", server.httpsURL(),
                              "--cacert", server.caFile().string()});
    launched.terminalColumns = 80;
    const Ended ended = run(launched);
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, HasSubstr(" page 1, 100 repositories"));
    EXPECT_THAT(ended.output, Not(HasSubstr("━")));
}

TEST_F(KorvogitProgress, StaysOutOfTheOutputsWay) {
    Launch launched = listAll({"--format", "jsonl"});
    launched.environment["NO_COLOR"] = "1";
    const Ended ended = run(launched);
    // Erased before what is printed, and gone at the end.
    EXPECT_THAT(ended.output, HasSubstr("50 repositories\r\x1b[K{\"identifier\":"));
    EXPECT_THAT(ended.output, EndsWith("}\r\n"));
}

TEST_F(KorvogitProgress, FitsIntoANarrowTerminal) {
    const Ended ended = run(listAll({"--format", "csv", "--columns", "name"}, 30));
    EXPECT_THAT(ended.output, HasSubstr("━━━━━━━━╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌  …\r"));
}

TEST_F(KorvogitProgress, IsOfASCIIWhereTheLocaleHasNothingElse) {
    Launch launched = listAll();
    launched.environment["LC_ALL"] = "C";
    EXPECT_THAT(run(launched).output, HasSubstr("########----------------  page 1 of 3"));
}

TEST_F(KorvogitProgress, IsNotShownWhereNoCursorMoves) {
    Launch launched = listAll();
    launched.environment["TERM"] = "dumb";
    EXPECT_THAT(run(launched).output, Not(HasSubstr("page 1")));
    launched.terminalColumns.reset();
    EXPECT_EQ(run(launched).error, "");
}

}  // namespace
