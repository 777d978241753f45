// A person signs in: the program, a real browser and the emulated services.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/browser/Chromium.h"
#include "tests/tools/korvogit/SignIn.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class LoginInABrowser : public KorvogitSignIn {
protected:
    Launch login(const std::string& service, const Arguments& more) const {
        const std::string port = std::to_string(server.httpsPort());
        Launch launch = withSecret(
            Arguments{"login", "--service", service, "--client-id", "demo-client"} + hosts() +
            Arguments{"--connect-to", "bitbucket.org:443:127.0.0.1:" + port} + more);
        launch.environment["BROWSER"] = opened.command();
        return launch;
    }
    /// Opens what the program wants to have opened, as far as the service's page.
    std::string openServicePage(const std::string& title) {
        const auto address = opened.wait();
        browser.open(address);
        browser.waitForTitle(title);
        return address;
    }

    OpenedAddress opened;
    Chromium browser = Chromium(server.httpsPort(), shownKeyHash(server.httpsPort()));
};

TEST_F(LoginInABrowser, AllowedSignsInAtGitHubAndListsTheRepositories) {
    Program program(
        login("GitHub", {"--scopes", "repo", "--user", "octavia", "--list-repositories"}));
    openServicePage("Sign in to GitHub");
    EXPECT_THAT(browser.text(), HasSubstr("Demo Application wants to use your GitHub account"));
    browser.press("#allow");
    browser.waitForTitle("Signed in to GitHub");
    EXPECT_THAT(browser.text(), HasSubstr("You may close this page."));

    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
    EXPECT_THAT(ended.output, HasSubstr("Signed in to GitHub.\n"));
    EXPECT_THAT(ended.output, HasSubstr("User           octavia\n"));
    EXPECT_THAT(ended.output, HasSubstr("Page 1 of 5"));
    for (const char* secret : {"gho_", "demo-secret"}) {
        EXPECT_THAT(browser.html(), Not(HasSubstr(secret)));
        EXPECT_THAT(ended.output, Not(HasSubstr(secret)));
    }
}

TEST_F(LoginInABrowser, DeniedIsSaidInTheBrowserAndInTheTerminal) {
    Program program(login("GitHub", {"--scopes", "repo"}));
    openServicePage("Sign in to GitHub");
    browser.press("#deny");
    browser.waitForTitle("Not signed in to GitHub");
    EXPECT_THAT(browser.text(), HasSubstr("The sign-in was denied."));
    EXPECT_THAT(browser.text(), HasSubstr("You may close this page."));

    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.error, testing::StartsWith("korvogit: The sign-in was denied.\n"));
    EXPECT_TRUE(server.requests({.path = "/login/oauth/access_token"}).empty());
}

TEST_F(LoginInABrowser, AllowedSignsInAtBitbucketCloud) {
    Program program(login("Bitbucket", {"--user", "marlow", "--format", "json"}));
    const auto address = openServicePage("Sign in to Bitbucket");
    browser.press("#allow");
    browser.waitForTitle("Signed in to Bitbucket Cloud");

    const json printed = json::parse(program.wait().output);
    EXPECT_EQ(printed.at("ok"), true);
    const json& credentials = printed.at("credentials");
    EXPECT_EQ(credentials.at("OAuthState"), valueIn(address, "state"));
    emulator_test::Client api(server.httpsPort(), {server.caFile(), "api.bitbucket.org"});
    api.send(emulator_test::get(
        "/2.0/user", "Authorization: Bearer " + credentials.at("token").get<std::string>() + "\r\n",
        "api.bitbucket.org"));
    EXPECT_EQ(json::parse(api.receive().body).at("nickname"), "marlow");
}

}  // namespace
