// Each fault of docs/reliability.md, at each operation that sends requests.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "support/session/Loader.h"
#include "tests/reliability/Faults.h"
#include "tests/reliability/Operations.h"
#include "tests/reliability/Page.h"

namespace {

std::string text(const std::optional<RKTError>& error) {
    return error ? error->domain() + " " + std::to_string(error->code()) : "success";
}

class Faults : public testing::TestWithParam<std::tuple<FaultRow, Operation>> {
protected:
    const FaultRow& row() const { return std::get<0>(GetParam()); }
    Operation operation() const { return std::get<1>(GetParam()); }
    const std::string& expected() const {
        const bool exchanges = operation() == Operation::TokenExchange;
        return exchanges ? row().outcomeOfTokenExchange : row().outcome;
    }
};

TEST_P(Faults, EndOnceAsThePageSaysAndLeaveNothingBehind) {
    Scene scene;
    row().bring(scene);
    Asker asker(operation());
    const auto error = asker.ask();
    EXPECT_EQ(text(error), expected()) << (error ? error->localizedDescription() : "");
    EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);

    scene.mend();
    EXPECT_EQ(text(asker.ask()), "success");
    EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);
    EXPECT_TRUE(asker.endsWithoutRest());
}

std::string testName(const testing::TestParamInfo<Faults::ParamType>& info) {
    const auto& [row, operation] = info.param;
    std::string name;
    bool capital = true;
    for (const char c : row.fault) {
        const auto letter = static_cast<unsigned char>(c);
        if (std::isalnum(letter)) {
            name += static_cast<char>(capital ? std::toupper(letter) : letter);
        }
        capital = !std::isalnum(letter) && c != ',' && c != '.';
    }
    return name + "_" + nameOf(operation);
}

TEST(ReliabilityPage, HasTheFaultsAndOutcomesThatAreTested) {
    auto documented = tableOfPage("Faults");
    for (auto& cells : documented) {
        ASSERT_EQ(cells.size(), 4U) << testing::PrintToString(cells);
        EXPECT_NE(cells[3], "") << "no reason for: " << cells[0];
        cells.pop_back();
    }
    std::vector<std::vector<std::string>> tested;
    for (const auto& row : faultRows()) {
        tested.push_back({row.fault, row.outcome, row.outcomeOfTokenExchange});
    }
    EXPECT_THAT(documented, testing::ElementsAreArray(tested));
}

INSTANTIATE_TEST_SUITE_P(, Faults,
                         testing::Combine(testing::ValuesIn(faultRows()),
                                          testing::ValuesIn(allOperations)),
                         testName);

}  // namespace
