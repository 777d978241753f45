#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

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
using testing::Not;

class EmulatedGitLab : public testing::Test {
protected:
    explicit EmulatedGitLab(emulator::ServerOptions options = {})
        : server(std::move(options)),
          client(server.httpsPort(), Tls{server.caFile(), "gitlab.com"}) {}

    Response ask(const std::string& target, const std::string& headers = {}) {
        client.send(get("/api/v4" + target, headers, "gitlab.com"));
        return client.receive();
    }
    Response askAs(const std::string& login, const std::string& target) {
        return ask(target, "Authorization: Bearer demo-token-" + login + "\r\n");
    }
    template <typename T>
    static std::vector<T> valuesOf(const Response& response, const char* member) {
        std::vector<T> values;
        for (const auto& project : json::parse(response.body)) {
            values.push_back(project.at(member).template get<T>());
        }
        return values;
    }

    Server server;
    Client client;
};

emulator::ServerOptions withTokens() {
    auto account = emulator::generateAccount("ada", "good", 5);
    account.tokens.push_back({.value = "expired", .scopes = {"api"}, .expires = 999});
    account.tokens.push_back({.value = "narrow", .scopes = {"read_user"}});
    return {.accounts = emulator::Accounts().add(account), .clock = [] { return 1000; }};
}

class EmulatedGitLabWithTokens : public EmulatedGitLab {
protected:
    EmulatedGitLabWithTokens() : EmulatedGitLab(withTokens()) {}
    Response askWith(const std::string& token) {
        return ask("/user", "Authorization: Bearer " + token + "\r\n");
    }
};

TEST_F(EmulatedGitLab, TellsWhoIsSignedIn) {
    const auto response = askAs("octavia", "/user");
    EXPECT_EQ(response.status, 200U);
    EXPECT_EQ(json::parse(response.body)["username"], "octavia");
    EXPECT_TRUE(response.header("X-Request-Id"));
}

TEST_F(EmulatedGitLab, TakesTokensInItsOwnHeaderToo) {
    const auto response = ask("/user", "PRIVATE-TOKEN: demo-token-marlow\r\n");
    EXPECT_EQ(json::parse(response.body)["username"], "marlow");
}

TEST_F(EmulatedGitLab, AnswersForEveryHostUnderItsPath) {
    client.send(get("/api/v4/projects?min_access_level=10&per_page=1",
                    "Authorization: Bearer demo-token-octavia\r\n", "git.example.com:8443"));
    const auto response = client.receive();
    EXPECT_EQ(response.status, 200U);
    const auto project = json::parse(response.body)[0];
    EXPECT_THAT(project["web_url"], HasSubstr("https://git.example.com:8443/"));
    EXPECT_THAT(project["ssh_url_to_repo"], HasSubstr("git@git.example.com:"));
}

TEST_F(EmulatedGitLabWithTokens, RefusesWithTheShapeOfTheReason) {
    EXPECT_EQ(askWith("good").status, 200U);
    EXPECT_EQ(askWith("unknown").body, R"({"message":"401 Unauthorized"})");
    const auto expired = askWith("expired");
    EXPECT_EQ(expired.status, 401U);
    EXPECT_EQ(json::parse(expired.body)["error"], "invalid_token");
    const auto narrow = askWith("narrow");
    EXPECT_EQ(narrow.status, 403U);
    EXPECT_EQ(json::parse(narrow.body)["error"], "insufficient_scope");
    EXPECT_TRUE(json::parse(narrow.body).contains("scope"));
}

TEST_F(EmulatedGitLabWithTokens, RefusesSingleFieldsWithAListForEach) {
    const auto put = [&](const std::string& body) {
        client.send("PUT /api/v4/user/status HTTP/1.1\r\nHost: gitlab.com\r\nContent-Length: " +
                    std::to_string(body.size()) + "\r\nAuthorization: Bearer good\r\n\r\n" + body);
        return client.receive();
    };
    const auto refused = put(json{{"message", std::string(101, 'x')}}.dump());
    EXPECT_EQ(refused.status, 400U);
    EXPECT_EQ(refused.body,
              R"x({"message":{"message":["is too long (maximum is 100 characters)"]}})x");
    EXPECT_EQ(json::parse(put(R"({"message":"away"})").body)["message"], "away");
    EXPECT_EQ(put("no JSON").status, 400U);
}

TEST_F(EmulatedGitLab, RefusesAnonymousAndBasicRequestsForTheUser) {
    EXPECT_EQ(ask("/user").status, 401U);
    const auto basic = emulator::base64("octavia:demo-password-octavia");
    EXPECT_EQ(ask("/user", "Authorization: Basic " + basic + "\r\n").status, 401U);
}

TEST_F(EmulatedGitLab, FindsNothingElsewhere) {
    EXPECT_EQ(askAs("octavia", "/nothing").status, 404U);
}

TEST_F(EmulatedGitLab, ListsTwentyProjectsNewestFirst) {
    const auto dates =
        valuesOf<std::string>(askAs("octavia", "/projects?min_access_level=10"), "created_at");
    EXPECT_EQ(dates.size(), 20U);
    EXPECT_TRUE(std::ranges::is_sorted(dates, std::greater()));
}

TEST_F(EmulatedGitLab, ListsEverybodysPublicProjectsUnlessAskedForOnesOwn) {
    const auto total = [&](const std::string& query) {
        return std::stoul(askAs("marlow", "/projects" + query).header("X-Total").value_or("0"));
    };
    EXPECT_EQ(total("?min_access_level=10"), 3U);
    EXPECT_EQ(total("?membership=true"), 3U);
    EXPECT_GT(total("?membership=false"), 3U);
    const auto visibilities = valuesOf<std::string>(ask("/projects"), "visibility");
    EXPECT_THAT(visibilities, Each("public"));
    EXPECT_EQ(ask("/projects?min_access_level=10").body, "[]");
}

TEST_F(EmulatedGitLab, FiltersByAccessLevel) {
    const auto total = [&](const char* level) {
        return askAs("octavia", std::string("/projects?min_access_level=") + level)
            .header("X-Total");
    };
    EXPECT_EQ(total("10"), "137");
    const auto own = std::ranges::count_if(
        server.accounts().withLogin("octavia")->repositories,
        [](const auto& repository) { return !repository.owner.isOrganization; });
    EXPECT_EQ(total("50"), std::to_string(own));
}

TEST_F(EmulatedGitLab, FiltersByArchivedAndVisibility) {
    const auto response =
        askAs("octavia", "/projects?min_access_level=10&archived=true&visibility=private");
    EXPECT_THAT(valuesOf<bool>(response, "archived"), Each(true));
    EXPECT_THAT(valuesOf<std::string>(response, "visibility"), Each("private"));
    EXPECT_NE(response.body, "[]");
    const auto active = askAs("octavia", "/projects?min_access_level=10&archived=false");
    EXPECT_THAT(valuesOf<bool>(active, "archived"), Each(false));
}

TEST_F(EmulatedGitLab, SortsByEveryKeyInBothDirections) {
    const auto sorted = [&](const std::string& key, const std::string& direction) {
        return askAs("octavia", "/projects?min_access_level=10&per_page=100&order_by=" + key +
                                    "&sort=" + direction);
    };
    const auto ids = valuesOf<std::int64_t>(sorted("id", "asc"), "id");
    EXPECT_TRUE(std::ranges::is_sorted(ids));
    for (const auto* date : {"created_at", "updated_at", "last_activity_at"}) {
        EXPECT_TRUE(std::ranges::is_sorted(valuesOf<std::string>(sorted(date, "asc"), date)))
            << date;
        const auto descending = valuesOf<std::string>(sorted(date, "desc"), date);
        EXPECT_TRUE(std::ranges::is_sorted(descending, std::greater())) << date;
    }
    const auto paths = valuesOf<std::string>(sorted("name", "asc"), "path");
    EXPECT_TRUE(std::ranges::is_sorted(paths));
}

TEST_F(EmulatedGitLab, RefusesValuesThatItDoesNotKnow) {
    const auto refusal = [&](const std::string& query) {
        const auto response = askAs("octavia", "/projects?" + query);
        EXPECT_EQ(response.status, 400U) << query;
        return json::parse(response.body).value("error", "");
    };
    EXPECT_EQ(refusal("order_by=nothing"), "order_by does not have a valid value");
    EXPECT_EQ(refusal("sort=up"), "sort does not have a valid value");
    EXPECT_EQ(refusal("visibility=secret"), "visibility does not have a valid value");
    EXPECT_EQ(refusal("archived=maybe"), "archived does not have a valid value");
    EXPECT_EQ(refusal("min_access_level=11"), "min_access_level does not have a valid value");
    EXPECT_EQ(refusal("simple=maybe"), "simple does not have a valid value");
}

TEST_F(EmulatedGitLab, TakesTheLibrarysNameOfTheLastActivity) {
    const auto response =
        askAs("octavia", "/projects?min_access_level=10&order_by=last_activity_date&sort=asc");
    EXPECT_TRUE(std::ranges::is_sorted(valuesOf<std::string>(response, "last_activity_at")));
}

TEST_F(EmulatedGitLab, TakesThatNameForAnOrderAlone) {
    for (const std::string parameter : {"sort", "visibility", "min_access_level", "archived"}) {
        const auto response = askAs("octavia", "/projects?" + parameter + "=last_activity_date");
        EXPECT_EQ(response.status, 400U) << parameter;
    }
}

TEST_F(EmulatedGitLab, SaysLessOfProjectsWhenThatIsAskedFor) {
    const auto first = [&](const std::string& simple) {
        return json::parse(
            askAs("octavia", "/projects?min_access_level=10&per_page=1" + simple).body)[0];
    };
    const auto full = first("");
    const auto brief = first("&simple=true");
    for (const auto& [name, value] : brief.items()) EXPECT_EQ(full.at(name), value) << name;
    for (const auto* name : {"id", "name_with_namespace", "ssh_url_to_repo", "namespace"}) {
        EXPECT_TRUE(brief.contains(name)) << name;
    }
    for (const auto* name : {"visibility", "archived", "_links", "permissions"}) {
        EXPECT_TRUE(full.contains(name)) << name;
        EXPECT_FALSE(brief.contains(name)) << name;
    }
    EXPECT_EQ(first("&simple=false"), full);
}

class StrictEmulatedGitLab : public EmulatedGitLab {
protected:
    StrictEmulatedGitLab() : EmulatedGitLab(strict()) {}
    static emulator::ServerOptions strict() {
        emulator::ServerOptions options;
        options.strict = true;
        return options;
    }
};

TEST_F(StrictEmulatedGitLab, RefusesTheLibrarysNameOfTheLastActivity) {
    const auto response = askAs("octavia", "/projects?order_by=last_activity_date");
    EXPECT_EQ(response.status, 400U);
    EXPECT_EQ(response.body, R"({"error":"order_by does not have a valid value"})");
    EXPECT_EQ(askAs("octavia", "/projects?order_by=last_activity_at").status, 200U);
}

TEST_F(EmulatedGitLab, TellsPagesInLinksAndHeaders) {
    const auto page = [&](int number) {
        return askAs("octavia",
                     "/projects?min_access_level=10&per_page=50&page=" + std::to_string(number));
    };
    const auto link = [](int number, const std::string& relation) {
        return "<https://gitlab.com/api/v4/projects?min_access_level=10&per_page=50&page=" +
               std::to_string(number) + ">; rel=\"" + relation + "\"";
    };
    EXPECT_EQ(page(1).header("Link"),
              link(2, "next") + ", " + link(1, "first") + ", " + link(3, "last"));
    const auto middle = page(2);
    EXPECT_EQ(middle.header("Link"), link(1, "prev") + ", " + link(3, "next") + ", " +
                                         link(1, "first") + ", " + link(3, "last"));
    EXPECT_EQ(middle.header("X-Page"), "2");
    EXPECT_EQ(middle.header("X-Per-Page"), "50");
    EXPECT_EQ(middle.header("X-Next-Page"), "3");
    EXPECT_EQ(middle.header("X-Prev-Page"), "1");
    EXPECT_EQ(middle.header("X-Total"), "137");
    EXPECT_EQ(middle.header("X-Total-Pages"), "3");
    EXPECT_EQ(page(3).header("X-Next-Page"), "");
    EXPECT_EQ(page(1).header("X-Prev-Page"), "");
}

TEST_F(EmulatedGitLab, CutsThePageSizeToAHundred) {
    const auto response = askAs("archive", "/projects?min_access_level=10&per_page=1000");
    EXPECT_EQ(json::parse(response.body).size(), 100U);
    EXPECT_EQ(response.header("X-Per-Page"), "100");
}

TEST_F(EmulatedGitLab, DoesNotCountListsThatAreTooLong) {
    const auto response = askAs("uncounted", "/projects?min_access_level=10");
    EXPECT_FALSE(response.header("X-Total"));
    EXPECT_FALSE(response.header("X-Total-Pages"));
    EXPECT_THAT(response.header("Link").value_or(""),
                testing::AllOf(HasSubstr("rel=\"next\""), Not(HasSubstr("rel=\"last\""))));
}

TEST_F(EmulatedGitLab, RefusesPagesTooFarOut) {
    EXPECT_EQ(askAs("octavia", "/projects?per_page=100&page=501").status, 200U);
    const auto response = askAs("octavia", "/projects?per_page=100&page=502");
    EXPECT_EQ(response.status, 405U);
    EXPECT_THAT(json::parse(response.body)["error"], HasSubstr("keyset pagination"));
}

TEST_F(EmulatedGitLab, LimitsRequestsInPlainTextOrHTML) {
    const auto limited = askAs("limited", "/user");
    EXPECT_EQ(limited.status, 429U);
    EXPECT_EQ(limited.header("Content-Type"), "text/plain");
    EXPECT_EQ(limited.header("Retry-After"), "60");
    EXPECT_EQ(limited.body, "Retry later\n");
    const auto proxy = askAs("hasty", "/user");
    EXPECT_EQ(proxy.status, 429U);
    EXPECT_EQ(proxy.header("Content-Type"), "text/html");
}

TEST_F(EmulatedGitLab, ShowsAProjectOnlyToThoseWhoMaySeeIt) {
    const auto& repositories = server.accounts().withLogin("octavia")->repositories;
    const auto secret = std::ranges::find(repositories, emulator::Visibility::Private,
                                          &emulator::Repository::visibility);
    const auto path = "/projects/" + secret->owner.login + "%2F" + secret->name;
    EXPECT_EQ(json::parse(askAs("octavia", path).body)["id"], secret->id);
    const auto byId = "/projects/" + std::to_string(secret->id);
    EXPECT_EQ(json::parse(askAs("octavia", byId).body)["id"], secret->id);
    EXPECT_EQ(askAs("marlow", path).status, 404U);
}

TEST_F(EmulatedGitLab, RedirectsToAProjectThatHasMoved) {
    const auto& project = server.accounts().withLogin("octavia")->repositories.front();
    const auto response =
        askAs("octavia", "/projects/former-" + project.owner.login + "%2F" + project.name);
    EXPECT_EQ(response.status, 301U);
    EXPECT_EQ(response.header("Location"),
              "https://gitlab.com/api/v4/projects/" + std::to_string(project.id));
}

}  // namespace
