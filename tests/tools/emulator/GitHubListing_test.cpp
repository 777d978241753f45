#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <span>

#include "EmulatedGitHub.h"

namespace {

using emulator_test::EmulatedGitHub;
using emulator_test::namesOf;
using emulator_test::Response;
using emulator_test::valuesOf;
using nlohmann::json;
using testing::Each;

class EmulatedGitHubListing : public EmulatedGitHub {};

TEST_F(EmulatedGitHubListing, ListsThirtyRepositoriesByName) {
    const auto response = askAs("octavia", "/user/repos");
    auto names = namesOf(response);
    EXPECT_EQ(names.size(), 30U);
    const auto lower = [](const std::string& name) {
        std::string result;
        std::ranges::transform(name, std::back_inserter(result),
                               [](unsigned char c) { return std::tolower(c); });
        return result;
    };
    EXPECT_TRUE(std::ranges::is_sorted(names, {}, lower));
}

TEST_F(EmulatedGitHubListing, CutsThePageSizeToAHundred) {
    EXPECT_EQ(namesOf(askAs("archive", "/user/repos?per_page=1000")).size(), 100U);
    EXPECT_EQ(namesOf(askAs("archive", "/user/repos?per_page=0")).size(), 30U);
    EXPECT_EQ(namesOf(askAs("archive", "/user/repos?per_page=x")).size(), 30U);
}

TEST_F(EmulatedGitHubListing, LinksTheFirstPage) {
    EXPECT_EQ(askAs("octavia", "/user/repos?per_page=50").header("Link"),
              "<https://api.github.com/user/repos?per_page=50&page=2>; rel=\"next\", "
              "<https://api.github.com/user/repos?per_page=50&page=3>; rel=\"last\"");
}

TEST_F(EmulatedGitHubListing, LinksAMiddlePageKeepingTheOtherParameters) {
    EXPECT_EQ(
        askAs("octavia", "/user/repos?sort=full_name&page=2&x=a%2Cb&per_page=50").header("Link"),
        "<https://api.github.com/user/repos?sort=full_name&page=1&x=a%2Cb&per_page=50>; "
        "rel=\"prev\", "
        "<https://api.github.com/user/repos?sort=full_name&page=3&x=a%2Cb&per_page=50>; "
        "rel=\"next\", "
        "<https://api.github.com/user/repos?sort=full_name&page=3&x=a%2Cb&per_page=50>; "
        "rel=\"last\", "
        "<https://api.github.com/user/repos?sort=full_name&page=1&x=a%2Cb&per_page=50>; "
        "rel=\"first\"");
}

TEST_F(EmulatedGitHubListing, LinksTheLastPage) {
    const auto response = askAs("octavia", "/user/repos?page=3&per_page=50");
    EXPECT_EQ(response.header("Link"),
              "<https://api.github.com/user/repos?page=2&per_page=50>; rel=\"prev\", "
              "<https://api.github.com/user/repos?page=1&per_page=50>; rel=\"first\"");
    EXPECT_EQ(namesOf(response).size(), 37U);
}

TEST_F(EmulatedGitHubListing, LinksNothingWhenEverythingFitsOnePage) {
    EXPECT_FALSE(askAs("marlow", "/user/repos").header("Link"));
    EXPECT_FALSE(askAs("bare", "/user/repos").header("Link"));
    EXPECT_EQ(askAs("bare", "/user/repos").body, "[]");
}

TEST_F(EmulatedGitHubListing, LeadsBackFromAPagePastTheEnd) {
    const auto response = askAs("octavia", "/user/repos?page=9&per_page=50");
    EXPECT_EQ(response.body, "[]");
    EXPECT_EQ(response.header("Link"),
              "<https://api.github.com/user/repos?page=3&per_page=50>; rel=\"prev\", "
              "<https://api.github.com/user/repos?page=1&per_page=50>; rel=\"first\"");
}

TEST_F(EmulatedGitHubListing, MayLeaveOutTheLastLink) {
    EXPECT_EQ(askAs("uncounted", "/user/repos?per_page=50").header("Link"),
              "<https://api.github.com/user/repos?per_page=50&page=2>; rel=\"next\"");
}

TEST_F(EmulatedGitHubListing, PagesTogetherHoldEveryRepositoryOnce) {
    const std::string start = R"({"id":)";  // of a record; its owner begins with the login
    std::set<std::string> ids;
    std::size_t records = 0;
    for (int page = 1; page <= 42; ++page) {
        const auto body =
            askAs("archive", "/user/repos?per_page=100&sort=pushed&page=" + std::to_string(page))
                .body;
        for (auto at = body.find(start); at != body.npos; at = body.find(start, at + 1)) {
            ids.insert(body.substr(at, body.find(',', at) - at));
            ++records;
        }
    }
    EXPECT_EQ(records, 4200U);
    EXPECT_EQ(ids.size(), 4200U);
}

TEST_F(EmulatedGitHubListing, SortsByDatesNewestFirst) {
    const std::pair<const char*, const char*> keys[] = {
        {"created", "created_at"}, {"updated", "updated_at"}, {"pushed", "pushed_at"}};
    for (const auto& [key, member] : keys) {
        const auto target = std::string("/user/repos?per_page=100&sort=") + key;
        const auto dates = valuesOf<std::string>(askAs("octavia", target), member);
        EXPECT_TRUE(std::ranges::is_sorted(dates, std::greater<>())) << key;
        const auto ascending =
            valuesOf<std::string>(askAs("octavia", target + "&direction=asc"), member);
        EXPECT_TRUE(std::ranges::is_sorted(ascending)) << key;
    }
}

TEST_F(EmulatedGitHubListing, TurnsNamesRound) {
    auto ascending = namesOf(askAs("octavia", "/user/repos?per_page=5"));
    auto descending = namesOf(askAs("octavia", "/user/repos?per_page=5&page=28&direction=desc"));
    std::ranges::reverse(descending);
    EXPECT_THAT(descending, testing::SizeIs(2));
    EXPECT_TRUE(std::ranges::equal(descending, std::span(ascending).first(2)));
}

TEST_F(EmulatedGitHubListing, FiltersByVisibility) {
    std::size_t total = 0;
    for (const auto* wanted : {"public", "private", "internal"}) {
        std::vector<std::string> all;
        for (const auto* page : {"1", "2"}) {
            const auto response =
                askAs("octavia", std::string("/user/repos?per_page=100&visibility=") + wanted +
                                     "&page=" + page);
            std::ranges::copy(valuesOf<std::string>(response, "visibility"),
                              std::back_inserter(all));
        }
        EXPECT_THAT(all, Each(std::string(wanted)));
        EXPECT_FALSE(all.empty());
        total += all.size();
    }
    EXPECT_EQ(total, 137U);
    EXPECT_EQ(namesOf(askAs("octavia", "/user/repos?visibility=all")).size(), 30U);
}

TEST_F(EmulatedGitHubListing, FiltersByTypeAndAffiliation) {
    const auto owners = [](const Response& response) {
        std::vector<std::string> logins;
        for (const auto& repository : json::parse(response.body)) {
            logins.push_back(repository.at("owner").at("login"));
        }
        return logins;
    };
    EXPECT_THAT(owners(askAs("octavia", "/user/repos?per_page=100&type=owner")), Each("octavia"));
    EXPECT_THAT(owners(askAs("octavia", "/user/repos?per_page=100&type=member")),
                Each(testing::StartsWith("octavia-")));
    EXPECT_THAT(
        owners(askAs("octavia", "/user/repos?per_page=100&affiliation=organization_member")),
        Each(testing::StartsWith("octavia-")));
    EXPECT_EQ(owners(askAs("octavia", "/user/repos?affiliation=collaborator")).size(), 0U);
}

TEST_F(EmulatedGitHubListing, FiltersByTheTimeOfTheLastChange) {
    const auto dates = valuesOf<std::string>(
        askAs("octavia", "/user/repos?sort=updated&per_page=100"), "updated_at");
    const auto since = valuesOf<std::string>(
        askAs("octavia", "/user/repos?sort=updated&per_page=100&since=" + dates[10]), "updated_at");
    EXPECT_EQ(since.size(), 10U);
    const auto before = askAs("octavia", "/user/repos?sort=updated&before=" + dates[10]);
    EXPECT_EQ(valuesOf<std::string>(before, "updated_at").front(), dates[11]);
}

TEST_F(EmulatedGitHubListing, RefusesTypeBesideVisibility) {
    const auto response = askAs("octavia", "/user/repos?visibility=public&type=owner");
    EXPECT_EQ(response.status, 422U);
    const auto body = json::parse(response.body);
    EXPECT_EQ(body["message"], "Validation Failed");
    EXPECT_EQ(body["errors"][0]["resource"], "Repository");
    EXPECT_EQ(body["errors"][0]["field"], "type");
    EXPECT_EQ(body["errors"][0]["code"], "invalid");
}

TEST_F(EmulatedGitHubListing, RefusesValuesThatItDoesNotKnow) {
    for (const auto* query : {"visibility=secret", "sort=size", "direction=up", "type=mine"}) {
        EXPECT_EQ(askAs("octavia", std::string("/user/repos?") + query).status, 422U) << query;
    }
}

}  // namespace
