// Which properties "korvogit repositories" prints, and by which it sorts them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class KorvogitColumns : public KorvogitTest {
protected:
    KorvogitColumns() {
        answerListings(R"([
            {"id": 10, "full_name": "o/beta", "private": false, "visibility": "public",
             "stargazers_count": 5, "fork": true},
            {"id": 9, "full_name": "o/Alpha", "visibility": "private", "stargazers_count": 40,
             "fork": false},
            {"id": 8, "full_name": "o/gamma", "visibility": "internal"}])");
    }

    std::string list(const Arguments& more) const {
        const Ended ended = repositories(more);
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.error, "");
        return ended.output;
    }

    /// The names in the order of a sorted listing.
    std::string sortedNames(const Arguments& more) const {
        return list(more + Arguments{"--columns", "fullName", "--format", "csv"});
    }
};

TEST_F(KorvogitColumns, AreThoseThatATableIsAskedFor) {
    EXPECT_EQ(list({"--columns", "numberOfStars,fullName,isFork,webURL"}),
              "numberOfStars  fullName  isFork  webURL\n"
              "            5  o/beta    true    -\n"
              "           40  o/Alpha   false   -\n"
              "            -  o/gamma   -       -\n"
              "\n"
              "Page 1\n");
}

TEST_F(KorvogitColumns, AreThoseThatCSVIsAskedFor) {
    EXPECT_EQ(list({"--columns", "visibility,identifier", "--format", "csv"}),
              "visibility,identifier\r\npublic,10\r\nprivate,9\r\ninternal,8\r\n");
}

TEST_F(KorvogitColumns, AreStyledAsInTheUsualTable) {
    Launch launched = launch(Arguments{"repositories", "--columns", "visibility"} + account());
    launched.terminalColumns = 80;
    EXPECT_THAT(run(launched).output, HasSubstr("\x1b[33mprivate\x1b[0m"));
    launched.environment["NO_COLOR"] = "1";
    EXPECT_THAT(run(launched).output, HasSubstr("\r\nprivate\r\n"));
}

TEST_F(KorvogitColumns, SortByNumbers) {
    EXPECT_EQ(sortedNames({"--sort-by", "numberOfStars"}),
              "fullName\r\no/beta\r\no/Alpha\r\no/gamma\r\n");
    // What is not set comes last in either direction.
    EXPECT_EQ(sortedNames({"--sort-by", "numberOfStars", "--direction", "descending"}),
              "fullName\r\no/Alpha\r\no/beta\r\no/gamma\r\n");
    EXPECT_EQ(sortedNames({"--sort-by", "identifier"}),
              "fullName\r\no/gamma\r\no/Alpha\r\no/beta\r\n");
}

TEST_F(KorvogitColumns, SortByTextsWhateverTheirCase) {
    EXPECT_EQ(sortedNames({"--sort-by", "fullName"}),
              "fullName\r\no/Alpha\r\no/beta\r\no/gamma\r\n");
    EXPECT_EQ(sortedNames({"--sort-by", "fullName", "--direction", "descending"}),
              "fullName\r\no/gamma\r\no/beta\r\no/Alpha\r\n");
}

TEST_F(KorvogitColumns, LeaveEqualsInTheOrderOfTheService) {
    EXPECT_EQ(sortedNames({"--sort-by", "ownerName"}),
              "fullName\r\no/beta\r\no/Alpha\r\no/gamma\r\n");
}

TEST_F(KorvogitColumns, SortJSONToo) {
    const auto results = repositoriesJSON({"--sort-by", "identifier"}).at("results");
    EXPECT_EQ(results.at(0).at("identifier"), 8);
    EXPECT_THAT(list({"--sort-by", "identifier", "--format", "jsonl"}),
                testing::StartsWith("{\"identifier\":8,"));
}

TEST_F(KorvogitColumns, SortWhatCameOnAllPages) {
    server.clearScripts();
    const auto printed = list({"--all", "--per-page", "20", "--sort-by", "numberOfForks",
                               "--columns", "numberOfForks", "--format", "csv"});
    std::istringstream lines(printed);
    std::string header;
    std::getline(lines, header);
    std::vector<int> forks;
    for (int count = 0; lines >> count;) forks.push_back(count);
    EXPECT_EQ(forks.size(), 137U);
    EXPECT_TRUE(std::ranges::is_sorted(forks));
}

TEST_F(KorvogitColumns, OfALineOfJSONAreAllProperties) {
    const auto printed = list({"--format", "jsonl"});
    const auto first = nlohmann::ordered_json::parse(printed.substr(0, printed.find('\n')));
    EXPECT_EQ(first.size(), 18U);
    EXPECT_EQ(first.at("fullName"), "o/beta");
    EXPECT_EQ(first.at("path"), nullptr);
}

}  // namespace
