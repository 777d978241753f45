#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

#include "SignIn.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::vector<std::string> properties = {"serviceType",
                                             "credentialType",
                                             "URL",
                                             "user",
                                             "token",
                                             "refreshToken",
                                             "expiryDate",
                                             "OAuthClientID",
                                             "OAuthClientSecret",
                                             "OAuthCode",
                                             "OAuthScopes",
                                             "OAuthState",
                                             "OAuthRedirectURL"};

class KorvogitOAuth : public KorvogitSignIn {
protected:
    static Ended authorizeURL(const Arguments& more) {
        return run(withSecret(Arguments{"oauth", "authorize-url"} + more));
    }
    static Ended verify(const std::string& responseURL, const Arguments& more = {}) {
        return run(withSecret(
            Arguments{"oauth", "verify", "--service", "GitHub", "--response-url", responseURL} +
            more));
    }
    Ended token(const Arguments& more, const std::string& client = "demo-client",
                const std::string& secret = "demo-secret") const {
        return run(
            withSecret(Arguments{"oauth", "token"} + application(client) + hosts() + more, secret));
    }
    /// A code that the emulated GitHub gave to an application.
    std::string code(const std::string& client = "demo-client") const {
        const auto url = authorizeURL(application(client)).output;
        return valueIn(decide(url.substr(0, url.find('\n')), "allow"), "code");
    }
    static json parsed(const Ended& ended) { return json::parse(ended.output); }

    const Arguments asJSON = {"--format", "json"};
};

std::vector<std::string> namesIn(const json& dictionary) {
    std::vector<std::string> names;
    for (const auto& [name, value] : dictionary.items()) names.push_back(name);
    return names;
}

TEST_F(KorvogitOAuth, PrintsTheAuthorizeURL) {
    const Ended ended = authorizeURL(
        application() + Arguments{"--redirect-url", "myapp://oauth/callback", "--scopes",
                                  "repo,user", "--state", "a b", "--user", "octavia"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output,
              "https://github.com/login/oauth/authorize?client_id=demo-client&response_type=code"
              "&redirect_uri=myapp://oauth/callback&scope=repo,user&state=a%20b&login=octavia\n");
    EXPECT_EQ(ended.error, "");
}

TEST_F(KorvogitOAuth, TellsEmptyFromAbsentInTheAuthorizeURL) {
    EXPECT_EQ(authorizeURL({"--service", "GitHub"}).output,
              "https://github.com/login/oauth/authorize?client_id&response_type=code\n");
    EXPECT_EQ(
        authorizeURL({"--service", "GitHub", "--client-id", "", "--scopes", "", "--state="}).output,
        "https://github.com/login/oauth/authorize"
        "?client_id=&response_type=code&scope=&state=\n");
}

TEST_F(KorvogitOAuth, TakesScopesOneByOneToo) {
    EXPECT_THAT(
        authorizeURL({"--service", "GitHub", "--scope", "repo", "--scope", "user,gist"}).output,
        HasSubstr("&scope=repo,user,gist\n"));
}

TEST_F(KorvogitOAuth, PrintsTheAuthorizeURLAsJSON) {
    const Ended ended = authorizeURL({"--service", "Bitbucket", "--format", "json"});
    EXPECT_EQ(parsed(ended).at("ok"), true);
    EXPECT_EQ(parsed(ended).at("authorizeURL"),
              "https://bitbucket.org/site/oauth2/authorize?client_id&response_type=code");
}

TEST_F(KorvogitOAuth, SaysWhichServiceOffersNoSignIn) {
    for (const char* step : {"authorize-url", "token"}) {
        const Ended ended = run(withSecret({"oauth", step, "--service", "GitLab"}));
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(
            ended.error,
            "korvogit: GitLab.com offers no sign-in with OAuth2.\n"
            "  Nothing was sent, and other credentials change nothing. 'korvogit services' tells "
            "what each service takes.\n");
        const Ended inJSON =
            run(withSecret({"oauth", step, "--service", "GitLab", "--format", "json"}));
        EXPECT_EQ(inJSON.status, 1);
        EXPECT_EQ(parsed(inJSON).at("ok"), false);
        EXPECT_EQ(parsed(inJSON).at("error").at("domain"), "RKTInvalidArgumentException");
    }
}

TEST_F(KorvogitOAuth, PrintsTheCodeOfARedirect) {
    const Ended ended = verify("myapp://oauth/callback?code=a%2Fb&state=s", {"--state", "s"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "a/b\n");
}

TEST_F(KorvogitOAuth, PrintsAVerifiedRedirectAsJSON) {
    const json printed = parsed(verify(
        "myapp://oauth/callback?code=c&state=s",
        Arguments{"--state", "s", "--redirect-url", "myapp://oauth/callback", "--scopes", "repo"} +
            asJSON));
    EXPECT_EQ(namesIn(printed), (std::vector<std::string>{"credentials", "error", "ok"}));
    EXPECT_EQ(printed.at("ok"), true);
    EXPECT_EQ(printed.at("error"), nullptr);
    EXPECT_THAT(namesIn(printed.at("credentials")), testing::UnorderedElementsAreArray(properties));
    EXPECT_EQ(printed.at("credentials"), json({{"serviceType", "GitHub"},
                                               {"credentialType", "OAuth2"},
                                               {"URL", nullptr},
                                               {"user", nullptr},
                                               {"token", nullptr},
                                               {"refreshToken", nullptr},
                                               {"expiryDate", nullptr},
                                               {"OAuthClientID", nullptr},
                                               {"OAuthClientSecret", "demo-secret"},
                                               {"OAuthCode", "c"},
                                               {"OAuthScopes", {"repo"}},
                                               {"OAuthState", "s"},
                                               {"OAuthRedirectURL", "myapp://oauth/callback"}}));
}

TEST_F(KorvogitOAuth, RefusesARedirectOfAnotherSignIn) {
    const std::string redirect = "myapp://oauth/callback?code=c&state=forged";
    const Ended ended = verify(redirect, {"--state", "s"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(
        ended.error,
        "korvogit: Could not verify the authenticity of the OAuth2 response.\n"
        "  No token was made, and your account is untouched. Begin the sign-in anew, with one "
        "page of it open; should it come again, somebody interferes.\n");
    const json printed = parsed(verify(redirect, Arguments{"--state", "s"} + asJSON));
    EXPECT_EQ(printed.at("ok"), false);
    EXPECT_EQ(printed.at("error").at("code"), 2099);
    EXPECT_EQ(printed.at("credentials").at("OAuthCode"), nullptr);
}

TEST_F(KorvogitOAuth, TellsTheProvidersErrorOfARedirect) {
    const Ended ended = verify(
        "myapp://x?error=access_denied&error_description=Not%20today&error_uri=https://d.example");
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error,
              "korvogit: Not today.\n  https://d.example\n"
              "  Nothing is broken, and no token was made. Sign in again to allow it.\n");
}

TEST_F(KorvogitOAuth, FailsWhereARedirectBringsNoCode) {
    for (const char* redirect : {"myapp://x", "myapp://x?code=", "myapp://x?code"}) {
        const Ended ended = verify(redirect);
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(parsed(verify(redirect, asJSON)).at("ok"), false);
        EXPECT_EQ(
            ended.error,
            "korvogit: The redirect brings no code.\n"
            "  Nothing was refused. Give the whole address, with all that follows its \"?\"; if "
            "it was whole, begin the sign-in anew.\n");
    }
}

TEST_F(KorvogitOAuth, DoesNotRepeatAResponseThatIsNoURL) {
    const Ended ended = verify("https://x/?code=my secret");
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.error, HasSubstr("--response-url: the text is not a URL"));
    EXPECT_THAT(ended.error, Not(HasSubstr("secret")));
}

TEST_F(KorvogitOAuth, ExchangesACode) {
    const Ended ended = token({"--code", code()});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, testing::MatchesRegex("Token          gho_[0-9a-f]{40}\n"
                                                    "Refresh token  -\n"
                                                    "Expires        never\n"));
    EXPECT_EQ(ended.error, "");
}

TEST_F(KorvogitOAuth, FailsWhereAnAnswerBringsNoToken) {
    for (const char* answer : {"{}", R"({"access_token": 5})", R"({"access_token": ""})"}) {
        server.clearScripts();
        server.script({.path = "/login/oauth/access_token"}, emulator::jsonAnswer(200, answer));
        const Ended ended = token({"--code", "c"});
        EXPECT_EQ(ended.status, 1) << answer;
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.error,
                    testing::StartsWith("korvogit: GitHub answered without a token.\n"));
        EXPECT_EQ(parsed(token(Arguments{"--code", "c"} + asJSON)).at("ok"), false);
    }
}

TEST_F(KorvogitOAuth, TakesTheCodeFromStandardInputToo) {
    Launch launch =
        withSecret(Arguments{"oauth", "token", "--code-stdin"} + application() + hosts());
    launch.input = code() + "\n";
    EXPECT_EQ(run(launch).status, 0);
}

TEST_F(KorvogitOAuth, PrintsAnExchangedTokenAsJSON) {
    using namespace std::chrono;
    const auto now = duration<double>(system_clock::now().time_since_epoch()).count();
    const json printed = parsed(token(Arguments{"--code", code("demo-client-expiring")} + asJSON,
                                      "demo-client-expiring", "demo-secret-expiring"));
    EXPECT_EQ(printed.at("ok"), true);
    const json& credentials = printed.at("credentials");
    EXPECT_THAT(credentials.at("token").get<std::string>(), testing::StartsWith("gho_"));
    EXPECT_THAT(credentials.at("refreshToken").get<std::string>(), testing::StartsWith("ghr_"));
    EXPECT_GE(credentials.at("expiryDate").get<double>(), now + 28'799);
    EXPECT_LE(credentials.at("expiryDate").get<double>(), now + 28'860);
}

TEST_F(KorvogitOAuth, PrintsTheDistantFutureAsItsSecond) {
    const json printed = parsed(token(Arguments{"--code", code()} + asJSON));
    EXPECT_EQ(printed.at("credentials").at("expiryDate"), 64'092'211'200);
}

TEST_F(KorvogitOAuth, PrintsTheEndsOfTheCalendarAsTheirSeconds) {
    const auto answer = [this](const std::string& expiresIn) {
        server.clearScripts();
        server.script(
            {.path = "/login/oauth/access_token"},
            emulator::jsonAnswer(200, R"({"access_token":"t","expires_in":)" + expiresIn + "}"));
    };
    const auto printedSecond = [this] {
        return parsed(token(Arguments{"--code", "c"} + asJSON))
            .at("credentials")
            .at("expiryDate")
            .get<double>();
    };
    answer("-9223372036854775808");
    EXPECT_THAT(token({"--code", "c"}).output,
                HasSubstr("Expires        -9223372036854 seconds after 1970\n"));
    EXPECT_DOUBLE_EQ(printedSecond(), -9'223'372'036'854.775808);
    answer("9223372036854775807");
    EXPECT_THAT(token({"--code", "c"}).output, HasSubstr("Expires        never\n"));
    EXPECT_DOUBLE_EQ(printedSecond(), 9'223'372'036'854.775807);
}

TEST_F(KorvogitOAuth, RefreshesAToken) {
    const json first = parsed(token(Arguments{"--code", code("demo-client-expiring")} + asJSON,
                                    "demo-client-expiring", "demo-secret-expiring"));
    const std::string refreshToken = first.at("credentials").at("refreshToken");
    const Arguments refresh = Arguments{"--refresh", "--code", refreshToken} + asJSON;
    const json second = parsed(token(refresh, "demo-client-expiring", "demo-secret-expiring"));
    EXPECT_EQ(second.at("ok"), true);
    EXPECT_NE(second.at("credentials").at("token"), first.at("credentials").at("token"));
    const Ended third = token(refresh, "demo-client-expiring", "demo-secret-expiring");
    EXPECT_EQ(third.status, 1);
    EXPECT_EQ(parsed(third).at("error").at("code"), 2000);
    EXPECT_EQ(parsed(third).at("credentials").at("token"), nullptr);
}

TEST_F(KorvogitOAuth, TellsWhyThereIsNoTokenWithoutASecret) {
    const std::string good = code();
    const Ended ended = token({"--code", good}, "demo-client", "my-wrong-secret");
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.error,
                testing::StartsWith(
                    "korvogit: The+client_id+and%2For+client_secret+passed+are+incorrect.\n"));
    EXPECT_THAT(ended.error, Not(HasSubstr("my-wrong-secret")));
    EXPECT_THAT(ended.error, Not(HasSubstr(good)));
}

TEST_F(KorvogitOAuth, SendsTheSecretInTheBodyOnly) {
    token({"--code", "the-code"}, "demo-client", "the-secret");
    const auto requests = server.requests({.path = "/login/oauth/access_token"});
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_THAT(requests[0].body, HasSubstr("client_secret=the-secret"));
    EXPECT_EQ(requests[0].target, "/login/oauth/access_token");
    for (const auto& [name, value] : requests[0].headers) {
        EXPECT_THAT(value, Not(HasSubstr("the-"))) << name;
    }
}

TEST_F(KorvogitOAuth, TakesNoSecretFromAnArgument) {
    const Ended ended =
        run(commandLine({"oauth", "token", "--service", "GitHub", "--client-secret", "my-secret"}));
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.error, Not(HasSubstr("my-secret")));
    EXPECT_THAT(ended.error, HasSubstr("but from the variable KORVOGIT_CLIENT_SECRET.\n"));
    EXPECT_THAT(run(commandLine({"login", "--client-secret", "my-secret"})).error,
                HasSubstr("but from the variable KORVOGIT_CLIENT_SECRET.\n"));
}

TEST_F(KorvogitOAuth, CallsEachSecretByItsName) {
    const Arguments exchange = {"oauth", "token", "--service", "GitHub", "--code-stdin"};
    EXPECT_THAT(run(commandLine(exchange)).error,
                StartsWith("korvogit: There is no code on standard input.\n"));
    EXPECT_THAT(run(commandLine(exchange + Arguments{"--refresh"})).error,
                StartsWith("korvogit: There is no refresh token on standard input.\n"));
    EXPECT_THAT(run(withSecret(exchange, "a\nb")).error,
                HasSubstr("The client secret from KORVOGIT_CLIENT_SECRET has a line end"));
}

TEST_F(KorvogitOAuth, BreaksOffAnExchange) {
    auto hold = server.hold({});
    Program program(
        withSecret(Arguments{"oauth", "token", "--code", "c"} + application() + hosts() + asJSON));
    ASSERT_TRUE(hold.waitUntilReached());
    program.signal(SIGINT);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 130);
    EXPECT_EQ(parsed(ended).at("error").at("code"), -999);
}

TEST_F(KorvogitOAuth, NeedsAStep) {
    const Ended ended = run(commandLine({"oauth"}));
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.error, HasSubstr("korvogit oauth --help"));
    EXPECT_THAT(run(commandLine({"oauth", "token"})).error,
                HasSubstr("korvogit oauth token --help"));
}

}  // namespace
