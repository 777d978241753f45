#include "tools/korvogit-emulator/Configuration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using emulator::Configuration;
using emulator::ConfigurationError;
using emulator::Restriction;
using emulator::Visibility;
using testing::ElementsAre;
using testing::IsEmpty;

Configuration read(std::string_view text) {
    Configuration configuration;
    emulator::readConfiguration(text, configuration);
    return configuration;
}

std::string mistakeIn(std::string_view text) {
    try {
        read(text);
    } catch (const ConfigurationError& error) {
        return error.what();
    }
    return "none";
}

TEST(EmulatorConfiguration, LeavesWhatItDoesNotMention) {
    const auto configuration = read("{}");
    EXPECT_EQ(configuration.server.accounts.all().size(), 10U);
    EXPECT_EQ(configuration.server.applications.size(), 2U);
    EXPECT_EQ(configuration.server.rateLimit, 5000);
    EXPECT_THAT(configuration.faults, IsEmpty());
}

TEST(EmulatorConfiguration, TakesTheServersSettings) {
    const auto server = read(R"({"httpPort": 1, "httpsPort": 65535, "names": ["git.example.net"],
                                 "rateLimit": 9, "strict": true, "crossWorkspace": false})")
                            .server;
    EXPECT_EQ(server.httpPort, 1);
    EXPECT_EQ(server.httpsPort, 65535);
    EXPECT_THAT(server.extraNames, ElementsAre("git.example.net"));
    EXPECT_EQ(server.rateLimit, 9);
    EXPECT_TRUE(server.strict);
    EXPECT_FALSE(server.listsAcrossWorkspaces);
}

TEST(EmulatorConfiguration, MakesAccountsOfAnySize) {
    const auto server = read(R"({"accounts": [
        {"login": "jo", "repositories": 250, "restriction": "no-last-link"},
        {"login": "kim", "token": "secret", "password": "pass"}]})")
                            .server;
    ASSERT_EQ(server.accounts.all().size(), 2U);
    const auto& jo = server.accounts.all()[0];
    EXPECT_EQ(jo.login, "jo");
    EXPECT_EQ(jo.repositories.size(), 250U);
    EXPECT_EQ(jo.restriction, Restriction::OmitsLastLink);
    EXPECT_EQ(server.accounts.withToken("demo-token-jo", 0).account, &jo);
    EXPECT_EQ(server.accounts.withToken("fault-bad-gzip", 0).account, &jo);
    const auto* kim = server.accounts.withToken("secret", 0).account;
    ASSERT_NE(kim, nullptr);
    EXPECT_EQ(kim->password, "pass");
    EXPECT_THAT(kim->repositories, IsEmpty());
}

TEST(EmulatorConfiguration, TakesRepositoriesOneByOne) {
    const auto server = read(R"({"accounts": [{"login": "jo", "repositories": [
        {"name": "anvil", "description": "Heavy", "visibility": "private", "archived": true,
         "fork": true, "defaultBranch": "trunk"},
        {"name": "bellows"}]}]})")
                            .server;
    const auto& repositories = server.accounts.all().front().repositories;
    ASSERT_EQ(repositories.size(), 2U);
    EXPECT_EQ(repositories[0].fullName(), "jo/anvil");
    EXPECT_EQ(repositories[0].description, "Heavy");
    EXPECT_EQ(repositories[0].visibility, Visibility::Private);
    EXPECT_TRUE(repositories[0].isArchived);
    EXPECT_TRUE(repositories[0].isFork);
    EXPECT_EQ(repositories[0].defaultBranch, "trunk");
    EXPECT_EQ(repositories[1].fullName(), "jo/bellows");
    EXPECT_EQ(repositories[1].description, std::nullopt);
    EXPECT_EQ(repositories[1].visibility, Visibility::Public);
    EXPECT_FALSE(repositories[1].isArchived);
    EXPECT_FALSE(repositories[1].isFork);
    EXPECT_EQ(repositories[1].defaultBranch, "main");
}

TEST(EmulatorConfiguration, TakesApplications) {
    const auto server = read(R"({"applications": [
        {"clientId": "id", "clientSecret": "secret", "name": "Mine",
         "callbacks": ["myapp://back"], "expiringTokens": true},
        {"clientId": "other", "clientSecret": "s"}]})")
                            .server;
    ASSERT_EQ(server.applications.size(), 2U);
    EXPECT_EQ(server.applications[0].clientId, "id");
    EXPECT_EQ(server.applications[0].clientSecret, "secret");
    EXPECT_EQ(server.applications[0].name, "Mine");
    EXPECT_THAT(server.applications[0].callbacks, ElementsAre("myapp://back"));
    EXPECT_TRUE(server.applications[0].expiringTokens);
    EXPECT_EQ(server.applications[1].name, "other");
    EXPECT_TRUE(server.applications[1].allows("http://127.0.0.1:8080/callback"));
}

TEST(EmulatorConfiguration, TakesFaults) {
    const auto faults = read(R"({"faults": [{"name": "tls-reset", "times": 2},
                                            {"name": "bad-gzip", "path": "/user/*"}]})")
                            .faults;
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0].name, "tls-reset");
    EXPECT_EQ(faults[0].times, 2U);
    EXPECT_EQ(faults[1].path, "/user/*");
    EXPECT_EQ(faults[1].times, emulator::Server::always);
}

TEST(EmulatorConfiguration, SaysWhereAMistakeIs) {
    EXPECT_EQ(mistakeIn("{\"names\": "), "this is no JSON: byte 11");
    EXPECT_EQ(mistakeIn("[]"), "an object is needed");
    EXPECT_EQ(mistakeIn(R"({"accounts": {}})"), "accounts: a list is needed");
    EXPECT_EQ(mistakeIn(R"({"accounts": [1]})"), "accounts[0]: an object is needed");
    EXPECT_EQ(mistakeIn(R"({"accounts": [{"login": "a"}, {}]})"),
              "accounts[1].login: this is missing");
    EXPECT_EQ(mistakeIn(R"({"accounts": [{"login": "a/b"}]})"),
              "accounts[0].login: \"a/b\" is no login: letters, digits, \"-\", \"_\" and \".\" "
              "make one");
    EXPECT_EQ(mistakeIn(R"({"accounts": [{"login": "a"}, {"login": "a"}]})"),
              "accounts: there are two accounts \"a\"");
    EXPECT_EQ(mistakeIn(R"({"accounts": [{"login": "a", "token": 1}]})"),
              "accounts[0].token: a text is needed");
    EXPECT_EQ(mistakeIn(R"({"accounts": [{"login": "a", "repositories": -1}]})"),
              "accounts[0].repositories: a whole number from 0 to 100000 is needed");
    EXPECT_EQ(mistakeIn(R"({"accounts": [{"login": "a", "repositories": 18446744073709551615}]})"),
              "accounts[0].repositories: a whole number from 0 to 100000 is needed");
    EXPECT_EQ(mistakeIn(R"({"accounts": [{"login": "a", "repositories": [{"name": "b",
                            "visibility": "secret"}]}]})"),
              "accounts[0].repositories[0].visibility: there is no visibility \"secret\", but "
              "public, private, internal");
    EXPECT_EQ(mistakeIn(R"({"faults": [{"name": "earthquake"}]})"),
              "faults[0].name: there is no fault \"earthquake\"; --list-faults names them");
    EXPECT_EQ(mistakeIn(R"({"faults": [{"name": "bad-gzip", "times": 0}]})"),
              "faults[0].times: a whole number from 1 to 2147483647 is needed");
    EXPECT_EQ(mistakeIn(R"({"names": [1]})"), "names: a list of texts is needed");
    EXPECT_EQ(mistakeIn(R"({"strict": 1})"), "strict: true or false is needed");
    EXPECT_EQ(mistakeIn(R"({"httpPort": 65536})"),
              "httpPort: a whole number from 0 to 65535 is needed");
    EXPECT_EQ(mistakeIn(R"({"applications": [{"clientId": "a", "clientSecret": "b",
                            "callbacks": []}]})"),
              "applications[0].callbacks: at least one is needed");
}

TEST(EmulatorConfiguration, DoesNotPassOverAMisspeltMember) {
    EXPECT_EQ(mistakeIn(R"({"faults": [{"name": "bad-gzip", "time": 1}]})"),
              "faults[0].time: there is no such member, but name, path, times");
    EXPECT_THAT(mistakeIn(R"({"acounts": []})"), testing::HasSubstr("acounts: there is no such"));
}

TEST(EmulatorConfiguration, ReadsAccountsOfOptions) {
    EXPECT_THAT(emulator::parseAccount("jo").repositories, IsEmpty());
    EXPECT_EQ(emulator::parseAccount("jo:3").repositories.size(), 3U);
    const auto limited = emulator::parseAccount("a.b-c_1:2:rate-limited-429");
    EXPECT_EQ(limited.login, "a.b-c_1");
    EXPECT_EQ(limited.restriction, Restriction::RateLimitedAs429);
    for (const auto* const wrong :
         {"", "a b", "jo:", "jo:x", "jo:1x", "jo:-1", "jo:100001", "jo:1:", "jo:1:angry"}) {
        EXPECT_THROW(emulator::parseAccount(wrong), ConfigurationError) << wrong;
    }
}

}  // namespace
