#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EmulatedGitHub.h"

namespace {

using emulator_test::agent;
using emulator_test::basic;
using emulator_test::EmulatedGitHub;
using emulator_test::get;
using emulator_test::namesOf;
using emulator_test::valuesOf;
using nlohmann::json;
using testing::Each;
using testing::HasSubstr;

TEST_F(EmulatedGitHub, TellsWhoIsSignedIn) {
    const auto response = askAs("octavia", "/user");
    EXPECT_EQ(response.status, 200U);
    EXPECT_EQ(response.header("Content-Type"), "application/json; charset=utf-8");
    const auto user = json::parse(response.body);
    EXPECT_EQ(user["login"], "octavia");
    EXPECT_EQ(user["type"], "User");
    EXPECT_EQ(user["id"], server.accounts().withLogin("octavia")->id);
}

TEST_F(EmulatedGitHub, DoesNotCheckTheUserNameBesideARightToken) {
    for (const auto* user : {"octavia", "(null)", "", "somebody"}) {
        EXPECT_EQ(ask("/user", agent + basic(user, "demo-token-octavia")).status, 200U) << user;
    }
}

TEST_F(EmulatedGitHub, TakesTheTokenAsBearerToo) {
    for (const auto* scheme : {"Bearer ", "bearer ", "token "}) {
        const auto header = std::string("Authorization: ") + scheme + "demo-token-marlow\r\n";
        const auto response = ask("/user", agent + header);
        EXPECT_EQ(json::parse(response.body)["login"], "marlow") << scheme;
    }
}

TEST_F(EmulatedGitHub, RefusesAWrongToken) {
    const auto response = ask("/user", agent + basic("octavia", "wrong"));
    EXPECT_EQ(response.status, 401U);
    EXPECT_EQ(response.body,
              R"({"message":"Bad credentials","documentation_url":"https://docs.github.com/rest",)"
              R"("status":"401"})");
    EXPECT_FALSE(response.header("ETag"));
}

TEST_F(EmulatedGitHub, RefusesPasswordsAndMissingAndUnreadableCredentials) {
    EXPECT_EQ(ask("/user", agent + basic("octavia", "demo-password-octavia")).status, 401U);
    EXPECT_EQ(ask("/user", agent).status, 401U);
    EXPECT_EQ(ask("/user", agent + std::string("Authorization: Basic !!!\r\n")).status, 401U);
    EXPECT_EQ(ask("/user", agent + std::string("Authorization: Digest x\r\n")).status, 401U);
}

TEST_F(EmulatedGitHub, ForbidsRequestsWithoutUserAgentInPlainText) {
    const auto response = ask("/user", basic("octavia", "demo-token-octavia"));
    EXPECT_EQ(response.status, 403U);
    EXPECT_EQ(response.header("Content-Type"), "text/plain; charset=utf-8");
    EXPECT_THAT(response.body, HasSubstr("User-Agent"));
}

TEST_F(EmulatedGitHub, FindsNothingElsewhere) {
    const auto response = askAs("octavia", "/users");
    EXPECT_EQ(response.status, 404U);
    EXPECT_EQ(json::parse(response.body)["message"], "Not Found");
    client.send("POST /user HTTP/1.1\r\nHost: api.github.com\r\nContent-Length: 0\r\n" +
                std::string(agent) + basic("octavia", "demo-token-octavia") + "\r\n");
    EXPECT_EQ(client.receive().status, 404U);
}

TEST_F(EmulatedGitHub, ShowsARepositoryOnlyToThoseWhoMaySeeIt) {
    const auto& repositories = server.accounts().withLogin("octavia")->repositories;
    const auto secret = std::ranges::find(repositories, emulator::Visibility::Private,
                                          &emulator::Repository::visibility);
    const auto path = "/repos/" + secret->fullName();
    EXPECT_EQ(json::parse(askAs("octavia", path).body)["id"], secret->id);
    EXPECT_EQ(askAs("marlow", path).status, 404U);
}

TEST_F(EmulatedGitHub, GivesRecordsOfRealisticSizeAndFields) {
    const auto page = json::parse(askAs("octavia", "/user/repos?per_page=100").body);
    std::size_t total = 0;
    for (const auto& repository : page) {
        total += repository.dump().size();
        EXPECT_EQ(repository.at("ssh_url"),
                  "git@github.com:" + repository.at("full_name").get<std::string>() + ".git");
        EXPECT_EQ(repository.at("private"), repository.at("visibility") != "public");
    }
    EXPECT_GT(total / page.size(), 4000U);
    EXPECT_LT(total / page.size(), 5600U);
    const auto& any = page.front();
    const std::string name = any.at("full_name");
    EXPECT_EQ(any.at("html_url"), "https://github.com/" + name);
    EXPECT_EQ(any.at("clone_url"), "https://github.com/" + name + ".git");
    EXPECT_EQ(any.at("url"), "https://api.github.com/repos/" + name);
    EXPECT_EQ(any.at("owner").size(), 19U);
    for (const auto* member :
         {"id", "description", "fork", "archived", "forks_count", "stargazers_count",
          "default_branch", "permissions", "license", "topics", "created_at", "pulls_url"}) {
        EXPECT_TRUE(any.contains(member)) << member;
    }
}

TEST_F(EmulatedGitHub, CompressesWhenThatIsAccepted) {
    const auto plain = askAs("octavia", "/user/repos?per_page=100");
    const auto packed =
        askAs("octavia", "/user/repos?per_page=100", "Accept-Encoding: br, gzip;q=0.8\r\n");
    EXPECT_FALSE(plain.header("Content-Encoding"));
    EXPECT_EQ(packed.header("Content-Encoding"), "gzip");
    EXPECT_LT(packed.body.size(), plain.body.size() / 8);
    EXPECT_EQ(emulator::gunzip(packed.body), plain.body);
    EXPECT_FALSE(askAs("octavia", "/user/repos", "Accept-Encoding: gzip;q=0, *\r\n")
                     .header("Content-Encoding"));
}

TEST_F(EmulatedGitHub, AnswersUnchangedToATagThatItGave) {
    const auto first = askAs("octavia", "/user");
    const auto tag = first.header("ETag").value();
    EXPECT_THAT(tag, testing::MatchesRegex("W/\"[0-9a-f]+\""));
    const auto second = askAs("octavia", "/user", "If-None-Match: \"other\", " + tag + "\r\n");
    EXPECT_EQ(second.status, 304U);
    EXPECT_EQ(second.header("ETag"), tag);
    EXPECT_FALSE(second.header("Content-Length"));
    EXPECT_EQ(second.header("X-RateLimit-Used"), "1");
    EXPECT_EQ(askAs("octavia", "/user", "If-None-Match: \"other\"\r\n").status, 200U);
}

TEST_F(EmulatedGitHub, GivesEachTokenATagOfItsOwn) {
    const auto one = ask("/user", agent + basic("", "demo-token-octavia"));
    const auto other = ask("/user", agent + basic("", "fault-set-cookie"));
    EXPECT_EQ(one.body, other.body);
    EXPECT_NE(one.header("ETag"), other.header("ETag"));
}

TEST_F(EmulatedGitHub, NumbersItsAnswers) {
    const auto one = askAs("octavia", "/user").header("X-GitHub-Request-Id");
    const auto other = askAs("octavia", "/user").header("X-GitHub-Request-Id");
    EXPECT_TRUE(one);
    EXPECT_NE(one, other);
}

TEST_F(EmulatedGitHub, RefusesAnAccountWhoseLimitIsUsedUp) {
    for (const auto& [login, status] :
         {std::pair{"limited", 403U}, std::pair{"limited429", 429U}}) {
        const auto response = askAs(login, "/user/repos");
        EXPECT_EQ(response.status, status);
        EXPECT_EQ(response.header("X-RateLimit-Remaining"), "0");
        EXPECT_EQ(response.header("X-RateLimit-Used"), "5000");
        EXPECT_THAT(json::parse(response.body)["message"].get<std::string>(),
                    HasSubstr("rate limit exceeded"));
    }
}

TEST_F(EmulatedGitHub, TellsWhenToComeBackAfterTheSecondaryLimit) {
    const auto response = askAs("hasty", "/user");
    EXPECT_EQ(response.status, 403U);
    EXPECT_EQ(response.header("Retry-After"), "60");
    EXPECT_NE(response.header("X-RateLimit-Remaining"), "0");
}

TEST_F(EmulatedGitHub, DemandsSingleSignOn) {
    const auto response = askAs("sso", "/user/repos");
    EXPECT_EQ(response.status, 403U);
    EXPECT_THAT(response.header("X-GitHub-SSO").value(),
                testing::StartsWith("required; url=https://github.com/orgs/sso-labs/sso?"));
}

TEST_F(EmulatedGitHub, LeavesOutOrganizationsWithoutSingleSignOn) {
    const auto response = askAs("partial", "/user/repos?per_page=100");
    EXPECT_EQ(response.status, 200U);
    EXPECT_THAT(response.header("X-GitHub-SSO").value(),
                testing::MatchesRegex("partial-results; organizations=[0-9]+(,[0-9]+)*"));
    EXPECT_THAT(namesOf(response), Each(testing::StartsWith("partial/")));
}

TEST_F(EmulatedGitHub, AnswersEnterpriseBelowItsPrefixAtAnyOtherHost) {
    const auto response = askEnterprise("/api/v3/user/repos?per_page=50");
    EXPECT_EQ(response.header("Link"),
              "<https://ghe.example.com:8443/api/v3/user/repos?per_page=50&page=2>; rel=\"next\", "
              "<https://ghe.example.com:8443/api/v3/user/repos?per_page=50&page=3>; rel=\"last\"");
    EXPECT_FALSE(response.header("X-RateLimit-Limit"));
    EXPECT_TRUE(response.header("X-GitHub-Enterprise-Version"));
    const auto first = json::parse(response.body).at(0);
    const std::string name = first.at("full_name");
    EXPECT_EQ(first.at("clone_url"), "https://ghe.example.com:8443/" + name + ".git");
    EXPECT_EQ(first.at("ssh_url"), "git@ghe.example.com:" + name + ".git");
    EXPECT_EQ(askEnterprise("/api/v3/user").status, 200U);
    EXPECT_EQ(askEnterprise("/user").status, 404U);
}

TEST_F(EmulatedGitHub, HasNoEnterprisePrefixAtThePublicHost) {
    EXPECT_EQ(askAs("octavia", "/api/v3/user").status, 404U);
}

TEST_F(EmulatedGitHub, AnswersHeadLikeGetWithoutTheBody) {
    const auto length = askAs("octavia", "/user/repos").header("Content-Length");
    client.send("HEAD /user/repos HTTP/1.1\r\nHost: api.github.com\r\n" + std::string(agent) +
                basic("octavia", "demo-token-octavia") + "\r\n");
    const auto head = client.receive(false);
    EXPECT_EQ(head.status, 200U);
    EXPECT_EQ(head.header("Content-Length"), length);
    EXPECT_TRUE(head.header("Link"));
    EXPECT_EQ(askAs("octavia", "/user").status, 200U);
}

emulator::ServerOptions strictOptions(std::int64_t& now) {
    emulator::ServerOptions options;
    options.rateLimit = 2;
    options.clock = [&now] { return now; };
    auto account = emulator::generateAccount("narrow", "demo-token-narrow", 40);
    account.tokens.push_back({"public-only", {"read:user"}, 2'000'000'000});
    options.accounts = emulator::Accounts().add(std::move(account));
    return options;
}

class StrictGitHub : public EmulatedGitHub {
protected:
    StrictGitHub() : EmulatedGitHub(strictOptions(now)) {}
    inline static std::int64_t now = 0;
    void SetUp() override { now = 1'900'000'000; }
};

TEST_F(StrictGitHub, CountsDownTheLimitAndStartsAnewAfterAnHour) {
    const auto first = askAs("narrow", "/user");
    EXPECT_EQ(first.header("X-RateLimit-Limit"), "2");
    EXPECT_EQ(first.header("X-RateLimit-Remaining"), "1");
    EXPECT_EQ(first.header("X-RateLimit-Reset"), "1900003600");
    EXPECT_EQ(first.header("X-RateLimit-Resource"), "core");
    EXPECT_EQ(askAs("narrow", "/user").header("X-RateLimit-Remaining"), "0");
    EXPECT_EQ(askAs("narrow", "/user").status, 403U);
    now += 3600;
    EXPECT_EQ(askAs("narrow", "/user").status, 200U);
}

TEST_F(StrictGitHub, ShowsOnlyPublicRepositoriesToATokenWithoutThatScope) {
    const auto response = ask("/user/repos?per_page=100", agent + basic("narrow", "public-only"));
    EXPECT_EQ(response.header("X-OAuth-Scopes"), "read:user");
    EXPECT_EQ(response.header("GitHub-Authentication-Token-Expiration"), "2033-05-18 03:33:20 UTC");
    const auto visibilities = valuesOf<std::string>(response, "visibility");
    EXPECT_FALSE(visibilities.empty());
    EXPECT_THAT(visibilities, Each("public"));
}

TEST_F(StrictGitHub, RefusesATokenThatHasExpired) {
    now = 2'000'000'000;
    EXPECT_EQ(ask("/user", agent + basic("narrow", "public-only")).status, 401U);
}

}  // namespace
