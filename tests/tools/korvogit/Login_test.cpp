#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "SignIn.h"

namespace {

using emulator_test::Client;
using emulator_test::get;
using emulator_test::Response;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class KorvogitLogin : public KorvogitSignIn {
protected:
    Launch login(const Arguments& more = {}, const std::string& secret = "demo-secret") const {
        Launch launch = withSecret(Arguments{"login"} + application() + hosts() + more, secret);
        launch.environment["BROWSER"] = opened.command();
        return launch;
    }

    static std::uint16_t portIn(const std::string& redirect) {
        const auto colon = redirect.find(':', redirect.find("127.0.0.1"));
        return static_cast<std::uint16_t>(std::stoul(redirect.substr(colon + 1)));
    }
    static std::string hostIn(const std::string& redirect) {
        return "127.0.0.1:" + std::to_string(portIn(redirect));
    }
    /// What the browser shows when it follows the redirect.
    static Response follow(const std::string& redirect) {
        Client client(portIn(redirect));
        client.send(get(redirect.substr(redirect.find('/', redirect.find("//") + 2)), "",
                        hostIn(redirect)));
        return client.receive();
    }
    static unsigned status(std::uint16_t port, const std::string& request) {
        Client client(port);
        client.send(request);
        return client.receive().status;
    }

    OpenedAddress opened;
};

TEST_F(KorvogitLogin, SignsInAndPrintsTheAccount) {
    Program program(login({"--scopes", "repo,user", "--user", "octavia"}));
    const auto address = opened.wait();
    const auto redirect = decide(address, "allow");
    const auto page = follow(redirect);
    const Ended ended = program.wait();

    EXPECT_EQ(page.status, 200U);
    EXPECT_THAT(page.body, HasSubstr("Signed in to GitHub"));
    EXPECT_THAT(page.body, HasSubstr("You may close this page."));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
    EXPECT_THAT(ended.output, HasSubstr("\n  " + address + "\n"));
    EXPECT_THAT(ended.output, testing::EndsWith("Signed in to GitHub.\n\n"
                                                "Service        GitHub\n"
                                                "Address        https://github.com\n"
                                                "User           octavia\n"
                                                "Scopes         repo, user\n"
                                                "Expires        never\n"));
    for (const auto& text : {page.head + page.body, ended.output}) {
        EXPECT_THAT(text, Not(HasSubstr("gho_")));
        EXPECT_THAT(text, Not(HasSubstr("demo-secret")));
        EXPECT_THAT(text, Not(HasSubstr(valueIn(redirect, "code"))));
    }
}

TEST_F(KorvogitLogin, PrintsTheRecordAsJSONAndTheRestOnStandardError) {
    Program program(login({"--format", "json"}));
    const auto address = opened.wait();
    follow(decide(address, "allow"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.error, HasSubstr(address));
    const json printed = json::parse(ended.output);
    EXPECT_EQ(printed.at("ok"), true);
    EXPECT_EQ(printed.at("credentials").size(), 13U);
    EXPECT_EQ(printed.at("credentials").at("URL"), "https://github.com");
    const std::string token = printed.at("credentials").at("token");
    Client api(server.httpsPort(), {server.caFile(), "api.github.com"});
    api.send(get("/user", "User-Agent: test\r\nAuthorization: Bearer " + token + "\r\n",
                 "api.github.com"));
    EXPECT_EQ(json::parse(api.receive().body).at("login"), "octavia");
}

TEST_F(KorvogitLogin, MakesAFreshStateOf256BitsForEachSignIn) {
    std::vector<std::string> states;
    for (int i = 0; i < 2; ++i) {
        Program program(login());
        states.push_back(valueIn(opened.wait(), "state"));
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait().status, 143);
        EXPECT_THAT(states.back(), testing::MatchesRegex("[0-9a-f]{64}"));
    }
    EXPECT_NE(states[0], states[1]);
}

TEST_F(KorvogitLogin, SaysThatItWasDenied) {
    Program program(login());
    const auto page = follow(decide(opened.wait(), "deny"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.error, testing::StartsWith("korvogit: The sign-in was denied.\n"));
    EXPECT_THAT(page.body, HasSubstr("Not signed in to GitHub"));
    EXPECT_THAT(page.body, HasSubstr("The sign-in was denied."));
    EXPECT_TRUE(server.requests({.path = "/login/oauth/access_token"}).empty());
}

TEST_F(KorvogitLogin, RefusesAnAnswerWithAnotherState) {
    Program program(login());
    auto redirect = decide(opened.wait(), "allow");
    redirect.back() = redirect.back() == '0' ? '1' : '0';
    const auto page = follow(redirect);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    const std::string sentence =
        "The browser came back with an answer that does not belong to this sign-in.";
    EXPECT_THAT(ended.error, HasSubstr(sentence));
    EXPECT_THAT(page.body, HasSubstr(sentence));
    EXPECT_TRUE(server.requests({.path = "/login/oauth/access_token"}).empty());
}

TEST_F(KorvogitLogin, RefusesAnAnswerWithoutAState) {
    for (const char* query : {"code=forged", "error=access_denied", "state="}) {
        Program program(login());
        const auto redirect = decide(opened.wait(), "allow");
        const auto page = follow(redirect.substr(0, redirect.find('?') + 1) + query);
        const Ended ended = program.wait();
        EXPECT_EQ(ended.status, 1);
        EXPECT_THAT(ended.error, HasSubstr("an answer that does not belong to this sign-in"));
        EXPECT_EQ(page.status, 200U);
    }
    EXPECT_TRUE(server.requests({.path = "/login/oauth/access_token"}).empty());
}

TEST_F(KorvogitLogin, ExchangesNothingWhereTheRedirectBringsNoCode) {
    for (const char* items : {"state=", "code=&state=", "code&state="}) {
        Program program(login());
        const auto address = opened.wait();
        const auto page =
            follow(valueIn(address, "redirect_uri") + "?" + items + valueIn(address, "state"));
        const Ended ended = program.wait();
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.error,
                  "korvogit: The redirect brings no code.\n"
                  "  Nothing was refused, and no token was made. Begin the sign-in anew.\n");
        EXPECT_THAT(page.body, HasSubstr("The redirect brings no code."));
    }
    EXPECT_TRUE(server.requests({.path = "/login/oauth/access_token"}).empty());
}

TEST_F(KorvogitLogin, StopsWaitingAtItsTime) {
    const Ended ended = run(login({"--wait", "1"}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error,
              "korvogit: No answer came from the browser within 1 second.\n"
              "  Nothing is broken, and no token was made. Begin anew, or wait longer with --wait "
              "SECONDS.\n");
}

TEST_F(KorvogitLogin, SaysThatAPortIsTaken) {
    const auto port = std::to_string(server.httpPort());
    const Ended ended = run(login({"--port", port}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error, "korvogit: Port " + port +
                               " cannot be used (Address already in use); choose another one with "
                               "--port.\n  Neither the service nor your account is the reason: "
                               "the sign-in has not begun.\n");
}

TEST_F(KorvogitLogin, WaitsOnThePortThatItIsGiven) {
    std::uint16_t port = 0;
    {
        const emulator::Server other;
        port = other.httpPort();
    }
    Program program(login({"--port", std::to_string(port)}));
    const auto redirect = decide(opened.wait(), "allow");
    EXPECT_EQ(portIn(redirect), port);
    follow(redirect);
    EXPECT_EQ(program.wait().status, 0);
}

TEST_F(KorvogitLogin, GoesOnWithoutABrowser) {
    for (const auto& [variable, path] :
         {std::pair("/nowhere/browser", "/usr/bin:/bin"), std::pair("", "/nowhere"),
          std::pair("false", "/usr/bin:/bin")}) {
        Launch launch = login({"--wait", "1"});
        launch.environment["BROWSER"] = variable;
        launch.environment["PATH"] = path;
        const Ended ended = run(launch);
        EXPECT_THAT(ended.error,
                    HasSubstr("No browser could be opened. Please open the address yourself.\n"));
        EXPECT_THAT(ended.error, HasSubstr("No answer came"));
    }
}

TEST_F(KorvogitLogin, TriesOneBrowserAfterTheOther) {
    Launch launch = login();
    launch.environment["BROWSER"] = "/nowhere/browser:false::" + opened.command() + ":false";
    Program program(launch);
    follow(decide(opened.wait(), "allow"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
}

TEST_F(KorvogitLogin, PutsTheAddressWhereTheBrowserWantsIt) {
    const std::string pipe = " end >" + opened.pipe().string();
    for (const char* command : {"echo %s", "echo '%s'", "echo \"%s\""}) {
        Launch launch = login();
        launch.environment["BROWSER"] = command + pipe;
        Program program(launch);
        EXPECT_THAT(opened.wait(), testing::MatchesRegex("https://github.com/[^ ]* end"));
        program.signal(SIGINT);
        EXPECT_EQ(program.wait().status, 130);
    }
}

TEST_F(KorvogitLogin, OpensNoBrowserWhenToldSo) {
    Launch launch = login({"--no-browser", "--wait", "1"});
    launch.environment["BROWSER"] = "false";
    EXPECT_THAT(run(launch).error, Not(HasSubstr("No browser")));
}

TEST_F(KorvogitLogin, GivesTheBrowserNoSecrets) {
    Launch launch = login();
    launch.environment["KORVOGIT_TOKEN"] = "my-token";
    // A browser that hands over its environment, on one line, instead of the address.
    const std::string pipe = opened.pipe();
    launch.environment["BROWSER"] = "env | tr '\\n' ' ' >" + pipe + "; echo >" + pipe + " #";
    Program program(launch);
    const auto environment = opened.wait();
    EXPECT_THAT(environment, HasSubstr("PATH="));
    EXPECT_THAT(environment, Not(HasSubstr("demo-secret")));
    EXPECT_THAT(environment, Not(HasSubstr("my-token")));
    program.signal(SIGINT);
    EXPECT_EQ(program.wait().status, 130);
}

TEST_F(KorvogitLogin, IsBrokenOffWhileItWaits) {
    Program program(login());
    opened.wait();
    program.signal(SIGINT);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 130);
    EXPECT_EQ(ended.error,
              "korvogit: The sign-in was broken off.\n"
              "  Nothing is broken, and nothing was changed at the service. Run it again when you "
              "like.\n");
}

TEST_F(KorvogitLogin, IsBrokenOffWhileItExchanges) {
    auto hold = server.hold({.path = "/login/oauth/access_token"});
    Program program(login());
    const auto redirect = decide(opened.wait(), "allow");
    Client browser(portIn(redirect));
    browser.send(get(redirect.substr(redirect.find("/callback")), "", hostIn(redirect)));
    ASSERT_TRUE(hold.waitUntilReached());
    program.signal(SIGINT);
    EXPECT_THAT(browser.receive().body, HasSubstr("Not signed in"));
    EXPECT_EQ(program.wait().status, 130);
}

TEST_F(KorvogitLogin, TellsWhyTheExchangeFailed) {
    Program program(login({}, "my-wrong-secret"));
    const auto redirect = decide(opened.wait(), "allow");
    const auto page = follow(redirect);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.error, testing::StartsWith("korvogit: GitHub refused the sign-in.\n"));
    EXPECT_THAT(page.body, HasSubstr("Not signed in to GitHub"));
    for (const auto& text : {ended.output, ended.error, page.body}) {
        EXPECT_THAT(text, Not(HasSubstr("my-wrong-secret")));
        EXPECT_THAT(text, Not(HasSubstr(valueIn(redirect, "code"))));
    }
}

TEST_F(KorvogitLogin, ShowsNoMarkupOfARedirect) {
    Program program(login());
    const auto address = opened.wait();
    const auto page =
        follow(valueIn(address, "redirect_uri") + "?error=invalid_scope&error_description=" +
               "%3Cscript%3Ealert(1)%3C/script%3E&state=" + valueIn(address, "state"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(
        ended.error,
        "korvogit: GitHub refused the sign-in.\n  <script>alert(1)</script>\n"
        "  Your account is not the reason. Check --scopes against what the application may ask "
        "for.\n");
    EXPECT_THAT(page.body, HasSubstr("GitHub refused the sign-in."));
    EXPECT_THAT(page.body, Not(HasSubstr("<script")));
    EXPECT_THAT(page.header("Content-Security-Policy").value_or(""),
                HasSubstr("default-src 'none'"));
    EXPECT_EQ(page.header("Cache-Control"), "no-store");
}

TEST_F(KorvogitLogin, TellsAnAnswerThatCannotBeReadFromARefusal) {
    server.script({.path = "/login/oauth/access_token"},
                  emulator::textAnswer(502, "<html>Bad Gateway</html>"));
    Program program(login());
    const auto page = follow(decide(opened.wait(), "allow"));
    const std::string sentence = "GitHub answered with something that cannot be read.";
    EXPECT_THAT(program.wait().error, testing::StartsWith("korvogit: " + sentence + "\n"));
    EXPECT_THAT(page.body, HasSubstr(sentence));
}

TEST_F(KorvogitLogin, TellsAServiceInTroubleFromARefusal) {
    for (const char* error : {"server_error", "temporarily_unavailable"}) {
        Program program(login());
        const auto address = opened.wait();
        follow(valueIn(address, "redirect_uri") + "?error=" + error +
               "&state=" + valueIn(address, "state"));
        EXPECT_THAT(program.wait().error,
                    testing::StartsWith("korvogit: GitHub cannot sign you in at the moment.\n"));
    }
}

TEST_F(KorvogitLogin, IsNotSignedInWithoutAToken) {
    server.script({.path = "/login/oauth/access_token"}, emulator::jsonAnswer(200, "{}"));
    Program program(login());
    follow(decide(opened.wait(), "allow"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error,
              "korvogit: GitHub answered without a token.\n"
              "  The credentials were not refused. Try again; should it stay, see whether a proxy "
              "changes the answers.\n");
}

TEST_F(KorvogitLogin, IgnoresWhatIsNotTheRedirect) {
    Program program(login());
    const auto redirect = decide(opened.wait(), "allow");
    const auto port = portIn(redirect);
    const auto host = hostIn(redirect);
    const auto target = redirect.substr(redirect.find("/callback"));
    EXPECT_EQ(status(port, get("/favicon.ico", "", host)), 404U);
    EXPECT_EQ(status(port, get("/", "", host)), 404U);
    EXPECT_EQ(status(port, get("/callback", "", host)), 404U);
    EXPECT_EQ(status(port, get("/callback?other=1", "", host)), 404U);
    EXPECT_EQ(status(port, get("/other" + target, "", host)), 404U);
    EXPECT_EQ(status(port, get(target, "", "thief.example.com")), 404U);
    EXPECT_EQ(status(port, get(target, "", "localhost:" + std::to_string(port))), 404U);
    EXPECT_EQ(status(port, "POST " + target + " HTTP/1.1\r\nHost: " + host + "\r\n\r\n"), 404U);
    EXPECT_EQ(status(port, "GET " + target + " HTTP/1.1\r\n\r\n"), 404U);
    EXPECT_EQ(status(port, "nonsense\r\n\r\n"), 404U);
    EXPECT_EQ(status(port, std::string(70'000, 'x')), 404U);
    EXPECT_EQ(follow(redirect).status, 200U);
    EXPECT_EQ(program.wait().status, 0);
}

TEST_F(KorvogitLogin, SilentAndSlowConnectionsHoldNobodyUp) {
    Program program(login());
    const auto redirect = decide(opened.wait(), "allow");
    std::vector<std::unique_ptr<Client>> silent;
    for (int i = 0; i < 100; ++i) {
        silent.push_back(std::make_unique<Client>(portIn(redirect)));
        if (i % 2 == 0) silent.back()->send("GET /callb");
    }
    Client slow(portIn(redirect));
    for (const char c : get(redirect.substr(redirect.find("/callback")), "", hostIn(redirect))) {
        slow.send(std::string(1, c));
    }
    EXPECT_EQ(slow.receive().status, 200U);
    EXPECT_EQ(program.wait().status, 0);
}

TEST_F(KorvogitLogin, ListsRepositoriesWithoutAskingWhenToldSo) {
    Program program(login({"--list-repositories", "--scopes", "repo"}));
    follow(decide(opened.wait(), "allow"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, HasSubstr("VISIBILITY"));
    EXPECT_THAT(ended.output, testing::EndsWith("Page 1 of 5\n"));  // no option leads to the next
}

TEST_F(KorvogitLogin, FailsWhereTheRepositoriesAreNoList) {
    answerListings("{}");
    Program program(login({"--list-repositories", "--scopes", "repo"}));
    follow(decide(opened.wait(), "allow"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.output, Not(HasSubstr("No repositories here.")));
    EXPECT_THAT(
        ended.error,
        testing::StartsWith("korvogit: GitHub answered, but not with a list of repositories.\n"));
}

TEST_F(KorvogitLogin, ListsNoRepositoriesAsJSON) {
    const Ended ended = run(login({"--list-repositories", "--format", "json"}));
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.error, HasSubstr("--list-repositories excludes --format json"));
}

TEST_F(KorvogitLogin, OffersAPersonToListTheRepositories) {
    for (const bool agrees : {true, false}) {
        Launch launch = login({"--scopes", "repo"});
        launch.terminalColumns = 80;
        Program program(launch);
        follow(decide(opened.wait(), "allow"));
        program.waitUntilShown("List its repositories? [Y/n] ");
        program.type(agrees ? "\n" : "n\n");
        const Ended ended = program.wait();
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.output.find("Page 1 of 5") != std::string::npos, agrees);
    }
}

// Whoever shares the terminal may have made it so.
TEST_F(KorvogitLogin, WaitsForTheReplyOfATerminalThatNeverBlocks) {
    Launch launch = login({"--scopes", "repo"});
    launch.terminalColumns = 80;
    launch.terminalNeverBlocks = true;
    Program program(launch);
    follow(decide(opened.wait(), "allow"));
    program.waitUntilShown("List its repositories? [Y/n] ");
    program.waitUntilAsleep();
    program.type("y\n");
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, HasSubstr("Page 1 of 5"));
}

TEST_F(KorvogitLogin, SaysInTheBrowserThatATokenIsLostWhichNobodyReads) {
    Launch launch = login({"--format", "json"});
    launch.output = Launch::Output::BrokenPipe;
    Program program(launch);
    const auto page = follow(decide(opened.wait(), "allow"));
    EXPECT_EQ(page.status, 200U);
    EXPECT_THAT(page.body, HasSubstr("Not signed in to GitHub"));
    EXPECT_THAT(page.body, HasSubstr("A token was made, but is lost"));
    EXPECT_EQ(program.wait().status, 1);
}

TEST_F(KorvogitLogin, NeedsAClient) {
    const Ended ended = run(withSecret({"login", "--service", "GitHub"}));
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.error, HasSubstr("--client-id is required"));
}

TEST_F(KorvogitLogin, SaysWhichServiceOffersNoSignIn) {
    const Ended ended = run(withSecret({"login", "--service", "GitLab", "--client-id", "c"}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error,
              "korvogit: GitLab.com offers no sign-in with OAuth2.\n"
              "  Nothing was sent, and other credentials change nothing. 'korvogit services' tells "
              "what each service takes.\n");
}

}  // namespace
