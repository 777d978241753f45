#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

class KorvogitOutput : public KorvogitTest {};

TEST_F(KorvogitOutput, ThatCannotBeWrittenIsAFailure) {
    for (const auto output : {Launch::Output::Closed, Launch::Output::FullDevice}) {
        Launch refused = launch(Arguments{"repositories", "--format", "json"} + account());
        refused.output = output;
        const Ended ended = run(refused);
        EXPECT_EQ(ended.status, 1);
        EXPECT_THAT(ended.error,
                    testing::MatchesRegex("korvogit: The output could not be written: .*\\.\n"));
    }
}

TEST_F(KorvogitOutput, MayLoseItsReader) {
    for (const Arguments& arguments :
         {Arguments{"--help"}, Arguments{"repositories"} + account()}) {
        Launch refused = launch(arguments);
        refused.output = Launch::Output::BrokenPipe;
        const Ended ended = run(refused);
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.error, "");
    }
}

}  // namespace
