#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>

#include "Client.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace {

using emulator::parseQuery;
using emulator::QueryItem;
using emulator::Server;
using emulator_test::Client;
using emulator_test::get;
using emulator_test::Response;
using emulator_test::Tls;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

/// The last value of that name in a form's text; nothing when there is none.
std::optional<std::string> valueIn(const std::string& form, const std::string& name) {
    std::optional<std::string> value;
    for (const auto& item : parseQuery(form)) {
        if (item.name == name) {
            value = item.value;
        }
    }
    return value;
}

/// What the redirect's query says under that name.
std::optional<std::string> redirected(const Response& response, const std::string& name) {
    const auto location = response.header("Location").value_or("");
    return valueIn(location.substr(location.find('?') + 1), name);
}

class EmulatedSignIn : public testing::Test {
protected:
    explicit EmulatedSignIn(std::string theHost = "github.com")
        : host(std::move(theHost)),
          server([this] {
              emulator::ServerOptions options;
              options.clock = [this] { return now.load(); };
              return options;
          }()),
          client(server.httpsPort(), Tls{server.caFile(), host}) {}

    Response send(const std::string& method, const std::string& target, const std::string& body,
                  const std::string& headers = {}) {
        client.send(method + " " + target + " HTTP/1.1\r\nHost: " + host + "\r\n" + headers +
                    "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                    std::to_string(body.size()) + "\r\n\r\n" + body);
        return client.receive();
    }
    /// What the browser gets for the button with this value.
    Response decide(const std::string& decision, const std::string& query) {
        return send("POST", authorizePath() + "?" + query, "login=octavia&decision=" + decision);
    }
    std::string code(const std::string& clientId = "demo-client") {
        return redirected(decide("allow", "client_id=" + clientId + "&scope=repo,user"), "code")
            .value_or("none");
    }
    Response exchange(const std::string& fields, const std::string& headers = {}) {
        return send("POST", tokenPath(), fields, headers);
    }
    std::string authorizePath() const {
        return host == "github.com" ? "/login/oauth/authorize" : "/site/oauth2/authorize";
    }
    std::string tokenPath() const {
        return host == "github.com" ? "/login/oauth/access_token" : "/site/oauth2/access_token";
    }
    unsigned statusOfListing(const std::string& apiHost, const std::string& path,
                             const std::string& token) {
        Client api(server.httpsPort(), Tls{server.caFile(), apiHost});
        api.send(get(path, "User-Agent: test\r\nAuthorization: Bearer " + token + "\r\n", apiHost));
        return api.receive().status;
    }

    const std::string host;
    std::atomic<std::int64_t> now = 1'800'000'000;
    Server server;
    Client client;

    const std::string demoClient = "client_id=demo-client&client_secret=demo-secret";
    const std::string expiringClient =
        "client_id=demo-client-expiring&client_secret=demo-secret-expiring";
    const std::string byCode = "&grant_type=authorization_code&code=";
    const std::string byRefreshToken = "&grant_type=refresh_token&refresh_token=";
};

class EmulatedBitbucketSignIn : public EmulatedSignIn {
protected:
    EmulatedBitbucketSignIn() : EmulatedSignIn("bitbucket.org") {}
};

TEST_F(EmulatedSignIn, AsksThePersonWithTwoButtons) {
    client.send(
        get("/login/oauth/authorize?client_id=demo-client&scope=repo,user&login=marlow", "", host));
    const auto page = client.receive();
    EXPECT_EQ(page.status, 200U);
    EXPECT_EQ(page.header("Content-Type"), "text/html; charset=utf-8");
    EXPECT_THAT(page.body, HasSubstr("<button id=\"allow\""));
    EXPECT_THAT(page.body, HasSubstr("<button id=\"deny\""));
    EXPECT_THAT(page.body, HasSubstr("Demo Application"));
    EXPECT_THAT(page.body, HasSubstr("<code>user</code>"));
    EXPECT_THAT(page.body, HasSubstr("<option selected>marlow</option>"));
}

TEST_F(EmulatedSignIn, ShowsWhatItWasGivenAsText) {
    client.send(get("/login/oauth/authorize?client_id=demo-client&scope=%3Cb%3E%22%26", "", host));
    EXPECT_THAT(client.receive().body, HasSubstr("<code>&lt;b&gt;&quot;&amp;</code>"));
}

TEST_F(EmulatedSignIn, RefusesAnUnknownApplication) {
    client.send(get("/login/oauth/authorize?client_id=nobody", "", host));
    EXPECT_EQ(client.receive().status, 404U);
}

TEST_F(EmulatedSignIn, SendsNobodyToAnAddressThatIsNotRegistered) {
    const auto answer =
        decide("allow", "client_id=demo-client&redirect_uri=https://thief.example.com/callback");
    EXPECT_EQ(answer.status, 400U);
    EXPECT_EQ(answer.header("Location"), std::nullopt);
}

TEST_F(EmulatedSignIn, AllowedSendsBackACodeAndTheState) {
    const auto answer =
        decide("allow",
               "client_id=demo-client&state=a%20%26b&redirect_uri=http://127.0.0.1:4321/callback");
    EXPECT_EQ(answer.status, 302U);
    EXPECT_THAT(answer.header("Location").value_or(""),
                testing::StartsWith("http://127.0.0.1:4321/callback?code="));
    EXPECT_EQ(redirected(answer, "state"), "a &b");
    EXPECT_EQ(redirected(answer, "code").value_or("").size(), 40U);
}

TEST_F(EmulatedSignIn, DeniedSendsBackTheErrorAndTheState) {
    const auto answer = decide("deny", "client_id=demo-client&state=s");
    EXPECT_EQ(answer.status, 302U);
    EXPECT_EQ(redirected(answer, "error"), "access_denied");
    EXPECT_EQ(redirected(answer, "state"), "s");
    EXPECT_EQ(redirected(answer, "code"), std::nullopt);
}

TEST_F(EmulatedSignIn, RefusesAnAccountThatThereIsNot) {
    const auto answer =
        send("POST", "/login/oauth/authorize?client_id=demo-client", "login=nobody&decision=allow");
    EXPECT_EQ(answer.status, 400U);
}

TEST_F(EmulatedSignIn, GitHubAnswersWithAFormByItself) {
    const auto answer = exchange(demoClient + byCode + code());
    EXPECT_EQ(answer.status, 200U);
    EXPECT_EQ(answer.header("Content-Type"), "application/x-www-form-urlencoded; charset=utf-8");
    const auto token = valueIn(answer.body, "access_token").value_or("");
    EXPECT_EQ(answer.body, "access_token=" + token + "&scope=repo%2Cuser&token_type=bearer");
    EXPECT_EQ(statusOfListing("api.github.com", "/user/repos", token), 200U);
}

TEST_F(EmulatedSignIn, GitHubAnswersWithJSONWhenThatIsAskedFor) {
    const auto answer = exchange(expiringClient + byCode + code("demo-client-expiring"),
                                 "Accept: application/json\r\n");
    EXPECT_EQ(answer.header("Content-Type"), "application/json; charset=utf-8");
    const auto members = json::parse(answer.body);
    EXPECT_EQ(members.at("expires_in"), 28'800);
    EXPECT_EQ(members.at("token_type"), "bearer");
    EXPECT_THAT(members.at("refresh_token").get<std::string>(), testing::StartsWith("ghr_"));
}

TEST_F(EmulatedSignIn, GitHubSaysErrorsWithStatus200) {
    const auto wrongCode = exchange(demoClient + byCode + "wrong");
    EXPECT_EQ(wrongCode.status, 200U);
    EXPECT_EQ(valueIn(wrongCode.body, "error"), "bad_verification_code");
    EXPECT_THAT(valueIn(wrongCode.body, "error_uri").value_or(""), HasSubstr("https://"));
    EXPECT_EQ(
        valueIn(exchange("client_id=demo-client&client_secret=x" + byCode + code()).body, "error"),
        "incorrect_client_credentials");
    EXPECT_EQ(valueIn(exchange(demoClient + byRefreshToken + "wrong").body, "error"),
              "bad_refresh_token");
    EXPECT_EQ(valueIn(exchange(demoClient + "&grant_type=password").body, "error"),
              "unsupported_grant_type");
}

TEST_F(EmulatedSignIn, ACodeWorksOnce) {
    const auto fields = demoClient + byCode + code();
    EXPECT_NE(valueIn(exchange(fields).body, "access_token"), std::nullopt);
    EXPECT_EQ(valueIn(exchange(fields).body, "error"), "bad_verification_code");
}

TEST_F(EmulatedSignIn, ACodeWorksForTenMinutes) {
    const auto first = code();
    const auto second = code();
    now += 599;
    EXPECT_NE(valueIn(exchange(demoClient + byCode + first).body, "access_token"), std::nullopt);
    now += 1;
    EXPECT_EQ(valueIn(exchange(demoClient + byCode + second).body, "error"),
              "bad_verification_code");
}

TEST_F(EmulatedSignIn, ACodeIsOneApplicationsOwn) {
    EXPECT_EQ(valueIn(exchange(expiringClient + byCode + code("demo-client")).body, "error"),
              "bad_verification_code");
}

TEST_F(EmulatedSignIn, TheRedirectMustBeTheSameInBothSteps) {
    const std::string query = "client_id=demo-client&redirect_uri=http://127.0.0.1:4321/callback";
    const auto first = redirected(decide("allow", query), "code").value_or("");
    EXPECT_EQ(valueIn(exchange(demoClient + byCode + first).body, "error"),
              "redirect_uri_mismatch");
    const auto second = redirected(decide("allow", query), "code").value_or("");
    EXPECT_NE(valueIn(exchange(demoClient + byCode + second +
                               "&redirect_uri=http://127.0.0.1:4321/callback")
                          .body,
                      "access_token"),
              std::nullopt);
}

TEST_F(EmulatedSignIn, ARefreshTokenWorksOnceAndBringsTheNext) {
    const auto first = exchange(expiringClient + byCode + code("demo-client-expiring")).body;
    const auto refreshToken = valueIn(first, "refresh_token").value_or("");
    const auto second = exchange(expiringClient + byRefreshToken + refreshToken).body;
    EXPECT_NE(valueIn(second, "access_token"), valueIn(first, "access_token"));
    EXPECT_NE(valueIn(second, "refresh_token"), refreshToken);
    EXPECT_EQ(valueIn(exchange(expiringClient + byRefreshToken + refreshToken).body, "error"),
              "bad_refresh_token");
    const auto next = valueIn(second, "refresh_token").value_or("");
    EXPECT_NE(valueIn(exchange(expiringClient + byRefreshToken + next).body, "access_token"),
              std::nullopt);
}

TEST_F(EmulatedSignIn, ACodeIsNoRefreshTokenNorTheOtherWayRound) {
    const auto fresh = code("demo-client-expiring");
    EXPECT_EQ(valueIn(exchange(expiringClient + byRefreshToken + fresh).body, "error"),
              "bad_refresh_token");
    const auto answer = exchange(expiringClient + byCode + fresh).body;  // it still works
    const auto refreshToken = valueIn(answer, "refresh_token").value_or("none");
    EXPECT_EQ(valueIn(exchange(expiringClient + byCode + refreshToken).body, "error"),
              "bad_verification_code");
    EXPECT_NE(
        valueIn(exchange(expiringClient + byRefreshToken + refreshToken).body, "access_token"),
        std::nullopt);
}

TEST_F(EmulatedSignIn, AnExpiringTokenEndsAfterEightHours) {
    const auto answer = exchange(expiringClient + byCode + code("demo-client-expiring")).body;
    const auto token = valueIn(answer, "access_token").value_or("");
    now += 28'799;
    EXPECT_EQ(statusOfListing("api.github.com", "/user", token), 200U);
    now += 1;
    EXPECT_EQ(statusOfListing("api.github.com", "/user", token), 401U);
}

TEST_F(EmulatedSignIn, TokensAreAskedForByPost) {
    client.send(get("/login/oauth/access_token", "", host));
    EXPECT_EQ(client.receive().status, 405U);
}

TEST_F(EmulatedBitbucketSignIn, AnswersWithJSONAndARefreshToken) {
    const auto answer = exchange(demoClient + byCode + code());
    EXPECT_EQ(answer.status, 200U);
    const auto members = json::parse(answer.body);
    EXPECT_EQ(members.at("scopes"), "repo user");
    EXPECT_EQ(members.at("expires_in"), 7200);
    EXPECT_EQ(members.at("token_type"), "bearer");
    EXPECT_EQ(members.at("state"), "authorization_code");
    const auto refreshed = json::parse(
        exchange(demoClient + byRefreshToken + members.at("refresh_token").get<std::string>())
            .body);
    EXPECT_EQ(refreshed.at("state"), "refresh_token");
    EXPECT_EQ(statusOfListing("api.bitbucket.org", "/2.0/user", refreshed.at("access_token")),
              200U);
}

TEST_F(EmulatedBitbucketSignIn, TakesTheClientFromTheAuthorizationToo) {
    const auto answer =
        exchange("grant_type=authorization_code&code=" + code(),
                 "Authorization: Basic " + emulator::base64("demo-client:demo-secret") + "\r\n");
    EXPECT_EQ(answer.status, 200U);
}

TEST_F(EmulatedBitbucketSignIn, SaysErrorsWithStatus400) {
    const auto wrongCode = exchange(demoClient + byCode + "wrong");
    EXPECT_EQ(wrongCode.status, 400U);
    EXPECT_EQ(json::parse(wrongCode.body).at("error"), "invalid_grant");
    const auto wrongClient = exchange("client_id=demo-client&client_secret=x" + byCode + code());
    EXPECT_EQ(json::parse(wrongClient.body).at("error"), "unauthorized_client");
}

}  // namespace
