#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "Client.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace {

using emulator::Server;
using emulator_test::Client;
using emulator_test::get;
using emulator_test::Response;
using emulator_test::Tls;
using nlohmann::json;
using testing::Each;
using testing::HasSubstr;
using testing::StartsWith;

class EmulatedBitbucketServer : public testing::Test {
protected:
    EmulatedBitbucketServer() : client(server.httpsPort(), Tls{server.caFile(), "localhost"}) {}

    Response ask(const std::string& target, const std::string& headers = {}) {
        client.send(get("/rest/api/1.0" + target, headers, "git.example.com:7990"));
        return client.receive();
    }
    Response askWith(const std::string& pair, const std::string& target) {
        return ask(target, "Authorization: Basic " + emulator::base64(pair) + "\r\n");
    }
    Response askAs(const std::string& login, const std::string& target) {
        return askWith(login + ":demo-token-" + login, target);
    }
    json envelope(const std::string& query) {
        return json::parse(askAs("octavia", "/repos?permission=REPO_READ" + query).body);
    }
    json repositories(const std::string& query) { return envelope(query).at("values"); }

    Server server;
    Client client;
};

TEST_F(EmulatedBitbucketServer, ShowsUsersToThoseWhoAreSignedIn) {
    EXPECT_EQ(json::parse(askAs("octavia", "/users/octavia").body)["slug"], "octavia");
    EXPECT_EQ(json::parse(askAs("octavia", "/users/marl%6Fw").body)["name"], "marlow");
    EXPECT_EQ(ask("/users/octavia").status, 401U);
}

TEST_F(EmulatedBitbucketServer, DoesNotFindUsersThatAreNotThere) {
    const auto response = askAs("octavia", "/users/(null)");
    EXPECT_EQ(response.status, 404U);
    const auto error = json::parse(response.body)["errors"][0];
    EXPECT_TRUE(error["context"].is_null());
    EXPECT_EQ(error["message"], "User (null) does not exist.");
    EXPECT_EQ(error["exceptionName"], "com.atlassian.bitbucket.user.NoSuchUserException");
}

TEST_F(EmulatedBitbucketServer, DoesNotFindUsersWhoseNamesAreNoText) {
    const auto response = askAs("octavia", "/users/%FF");
    EXPECT_EQ(response.status, 404U);
    EXPECT_EQ(json::parse(response.body)["errors"][0]["message"], "User \uFFFD does not exist.");
}

TEST_F(EmulatedBitbucketServer, TakesPasswordsTokensInTheirPlaceAndBearerTokens) {
    EXPECT_EQ(askWith("octavia:demo-password-octavia", "/users/octavia").status, 200U);
    EXPECT_EQ(askWith("octavia:demo-token-octavia", "/users/octavia").status, 200U);
    EXPECT_EQ(ask("/users/octavia", "Authorization: Bearer demo-token-octavia\r\n").status, 200U);
    EXPECT_EQ(askWith("marlow:demo-token-octavia", "/users/octavia").status, 401U);
}

TEST_F(EmulatedBitbucketServer, RefusesWrongPasswords) {
    const auto response = askWith("octavia:wrong", "/repos");
    EXPECT_EQ(response.status, 401U);
    EXPECT_EQ(response.header("WWW-Authenticate"), "Basic realm=\"Atlassian Bitbucket\"");
    EXPECT_TRUE(json::parse(response.body)["errors"][0]["message"].is_string());
}

TEST_F(EmulatedBitbucketServer, NumbersItsAnswers) {
    std::set<std::optional<std::string>> numbers;
    for (const auto* target : {"/repos", "/users/x", "/nothing"}) {
        numbers.insert(ask(target).header("X-AREQUESTID"));
    }
    EXPECT_EQ(numbers.size(), 3U);
    EXPECT_FALSE(numbers.contains(std::nullopt));
}

TEST_F(EmulatedBitbucketServer, FindsNothingElsewhere) {
    EXPECT_EQ(askAs("octavia", "/nothing").status, 404U);
    client.send("POST /rest/api/1.0/repos HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(client.receive().status, 405U);
}

TEST_F(EmulatedBitbucketServer, CountsStartInRepositories) {
    const auto all = envelope("&limit=1000");
    EXPECT_EQ(all["size"], 137);
    EXPECT_EQ(all["isLastPage"], true);
    EXPECT_TRUE(all["nextPageStart"].is_null());
    const auto page = envelope("&start=30&limit=10");
    EXPECT_EQ(page["start"], 30);
    EXPECT_EQ(page["limit"], 10);
    EXPECT_EQ(page["size"], 10);
    EXPECT_EQ(page["isLastPage"], false);
    EXPECT_EQ(page["nextPageStart"], 40);
    EXPECT_EQ(page["values"][0], all["values"][30]);
    const auto last = envelope("&start=130&limit=10");
    EXPECT_EQ(last["size"], 7);
    EXPECT_EQ(last["isLastPage"], true);
    const auto beyond = envelope("&start=18446744073709551615&limit=10");
    EXPECT_EQ(beyond["values"], json::array());
    EXPECT_EQ(beyond["isLastPage"], true);
}

TEST_F(EmulatedBitbucketServer, HasTwentyFiveOnAPageAndCutsTheLimitToAThousand) {
    EXPECT_EQ(envelope("")["limit"], 25);
    const auto many = json::parse(askAs("archive", "/repos?permission=REPO_READ&limit=5000").body);
    EXPECT_EQ(many["limit"], 1000);
    EXPECT_EQ(many["size"], 1000);
}

TEST_F(EmulatedBitbucketServer, FiltersByVisibilityPermissionAndName) {
    const auto visibilities = [&](const std::string& visibility) {
        std::vector<bool> values;
        for (const auto& repository : repositories("&limit=1000&visibility=" + visibility)) {
            values.push_back(repository["public"]);
        }
        return values;
    };
    EXPECT_THAT(visibilities("public"), Each(true));
    EXPECT_THAT(visibilities("private"), Each(false));
    EXPECT_EQ(visibilities("public").size() + visibilities("private").size(), 137U);
    const json own = json::parse(askAs("octavia", "/repos?permission=REPO_ADMIN&limit=1000").body);
    EXPECT_FALSE(own.at("values").empty());
    for (const auto& repository : own.at("values")) {
        EXPECT_EQ(repository["project"]["type"], "PERSONAL");
    }
    for (const auto& repository : repositories("&limit=1000&name=harbor")) {
        EXPECT_THAT(repository["slug"], HasSubstr("harbor"));
    }
}

TEST_F(EmulatedBitbucketServer, ListsWhatIsPublicToEverybody) {
    const json anonymous = json::parse(ask("/repos?limit=1000").body).at("values");
    EXPECT_FALSE(anonymous.empty());
    for (const auto& repository : anonymous) {
        EXPECT_EQ(repository["public"], true);
    }
    EXPECT_EQ(json::parse(ask("/repos?permission=REPO_READ").body)["values"], json::array());
}

TEST_F(EmulatedBitbucketServer, DescribesRepositoriesAsTheServerDoes) {
    for (const auto& repository : repositories("&limit=100")) {
        EXPECT_TRUE(repository["links"]["self"].is_array());
        EXPECT_FALSE(repository.contains("full_name"));
        const auto& clone = repository["links"]["clone"];
        EXPECT_EQ(clone[0]["name"], "ssh");
        EXPECT_THAT(clone[0]["href"], StartsWith("ssh://git@git.example.com:7999/"));
        EXPECT_EQ(clone[1]["name"], "http");
        EXPECT_THAT(clone[1]["href"], StartsWith("https://git.example.com:7990/scm/"));
    }
}

TEST_F(EmulatedBitbucketServer, LimitsRequests) {
    const auto response = askAs("limited", "/repos");
    EXPECT_EQ(response.status, 429U);
    EXPECT_TRUE(response.header("Retry-After"));
    EXPECT_EQ(json::parse(response.body)["errors"].size(), 1U);
}

}  // namespace
