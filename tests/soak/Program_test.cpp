// The soak program, for a short time.

#include <gtest/gtest.h>

#include <string>

#include "tests/helpers/Program.h"

namespace {

TEST(SoakProgram, BalancesItsBooks) {
    const auto ended = run({.program = KORVOGIT_SOAK_PROGRAM,
                            .arguments = {"--seconds", "3", "--services", "60", "--seed", "5"}});
    EXPECT_EQ(ended.status, 0) << ended.output << ended.error;
    EXPECT_EQ(ended.output.find("OUT OF ORDER"), std::string::npos) << ended.output;
    EXPECT_NE(ended.output.find("operations started"), std::string::npos) << ended.output;
    EXPECT_NE(ended.output.find("not judged below a minute"), std::string::npos) << ended.output;
}

TEST(SoakProgram, RefusesATimeThatIsNone) {
    EXPECT_EQ(run({.program = KORVOGIT_SOAK_PROGRAM, .arguments = {"--seconds", "0"}}).status, 2);
}

}  // namespace
