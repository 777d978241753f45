#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class KorvogitValidate : public KorvogitTest {
protected:
    Launch launchWithToken(const std::string& token, const Arguments& more = {}) const {
        Launch wrong = launch(Arguments{"validate"} + account() + more);
        wrong.environment["KORVOGIT_TOKEN"] = token;
        return wrong;
    }

    std::string authorization() const {
        return server.requests().at(0).headers.get("Authorization").value_or("");
    }

    static std::string basic(const std::string& userAndToken) {
        return "Basic " + emulator::base64(userAndToken);
    }
};

TEST_F(KorvogitValidate, SaysThatTheCredentialsAreAccepted) {
    const Ended ended = validate();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "GitHub accepts the credentials.\n");
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(server.requests().at(0).path, "/user");
    EXPECT_EQ(authorization(), basic("octavia:demo-token-octavia"));
}

TEST_F(KorvogitValidate, PrintsANullErrorAsJSON) {
    const Ended ended = validate({"--format", "json"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(json::parse(ended.output), json::parse(R"({"error": null})"));
    EXPECT_EQ(ended.error, "");
}

TEST_F(KorvogitValidate, TellsAPersonWhatTheServiceSuggests) {
    const Ended ended = run(launchWithToken("wrong"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.error,
              "korvogit: GitHub does not accept the credentials (Unauthorized).\n"
              "  Bad credentials\n"
              "  Network and address work. Check the token, when it ends and --user; 'korvogit "
              "services' names the page where a new one is made.\n");
}

TEST_F(KorvogitValidate, PrintsAnErrorAsJSONAndNothingElse) {
    const Ended ended = run(launchWithToken("wrong", {"--format", "json"}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(nlohmann::ordered_json::parse(ended.output).dump(),
              R"({"error":{"domain":"RKTKorvoGitServiceErrorDomain","code":1001,)"
              R"("localizedDescription":"Unauthorized",)"
              R"("localizedRecoverySuggestion":"Bad credentials","URL":null}})");
}

TEST_F(KorvogitValidate, NamesTheStatusOfAnotherRefusal) {
    server.script({.path = "/user"}, emulator::jsonAnswer(404, "{}"));
    const Ended ended = validate();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(
        ended.error,
        "korvogit: GitHub answered with status 404 (Not Found).\n"
        "  The network works, and nothing says that the token is wrong. Check --url, --service "
        "and --user.\n");
}

TEST_F(KorvogitValidate, NamesTheAddressOfAFailedTransfer) {
    server.fault({}, emulator::faults::resetAfterRequest());
    const Ended ended = validate();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.error, HasSubstr("\n  https://api.github.com/user\n"));
}

TEST_F(KorvogitValidate, RunsWithoutAnySecret) {
    Launch without = launch(Arguments{"validate"} + account() + Arguments{"--format", "json"});
    without.environment.erase("KORVOGIT_TOKEN");
    const Ended ended = run(without);
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(json::parse(ended.output).at("error").at("code"), 1001);
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(authorization(), basic("octavia:(null)"));
}

TEST_F(KorvogitValidate, TellsAnEmptyUserFromNone) {
    run(launch(Arguments{"validate", "--service", "GitHub"} + network()));
    EXPECT_EQ(authorization(), basic("(null):demo-token-octavia"));
    for (const Arguments& empty : {Arguments{"--user", ""}, Arguments{"--user="}}) {
        server.forgetRequests();
        const Ended ended =
            run(launch(Arguments{"validate", "--service", "GitHub"} + empty + network()));
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(authorization(), basic(":demo-token-octavia"));
    }
}

TEST_F(KorvogitValidate, AsksAnEnterpriseServerAtItsAddress) {
    const Ended ended =
        run(launch({"validate", "--service", "GitHubEnterprise", "--url", server.httpsURL(),
                    "--user", "octavia", "--cacert", server.caFile().string()}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "GitHub Enterprise accepts the credentials.\n");
    EXPECT_EQ(server.requests().at(0).path, "/api/v3/user");
}

TEST_F(KorvogitValidate, WarnsWhenAServersAddressIsMissing) {
    const Ended ended = run(launch(Arguments{"validate", "--service", "GitHubEnterprise", "--user",
                                             "octavia", "--format", "json"} +
                                   network()));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(json::parse(ended.output).at("error"), nullptr);
    EXPECT_THAT(ended.error, StartsWith("korvogit: warning: GitHub Enterprise has no address"));
    EXPECT_THAT(ended.error, HasSubstr("--url"));
}

TEST_F(KorvogitValidate, WarnsThatThePathOfAnAddressIsNotUsed) {
    const auto toldAt = [&](const std::string& url) {
        const Ended ended =
            run(launch({"validate", "--service", "GitHubEnterprise", "--url", url, "--user",
                        "octavia", "--cacert", server.caFile().string(), "--format", "json"}));
        EXPECT_EQ(json::parse(ended.output).at("error"), nullptr) << url;
        EXPECT_EQ(server.requests().back().path, "/api/v3/user");
        return ended.error;
    };
    EXPECT_EQ(toldAt(server.httpsURL()), "");
    EXPECT_EQ(toldAt(server.httpsURL() + "/"), "");
    EXPECT_EQ(toldAt(server.httpsURL() + "/git"),
              "korvogit: warning: the path in --url is not used: the API is asked for at the root "
              "of the server.\n");
}

TEST_F(KorvogitValidate, SaysWhichServiceCannotBeAskedYet) {
    const Ended told = run(commandLine({"validate", "--service", "AzureDevOps"}));
    EXPECT_EQ(told.status, 1);
    EXPECT_EQ(told.output, "");
    EXPECT_THAT(told.error, StartsWith("korvogit: Azure DevOps cannot be asked yet"));

    const Ended printed =
        run(commandLine({"validate", "--service", "AzureDevOps", "--format", "json"}));
    EXPECT_EQ(printed.status, 1);
    EXPECT_EQ(printed.error, "");
    const auto error = json::parse(printed.output).at("error");
    EXPECT_EQ(error.at("domain"), "RKTInvalidArgumentException");
    EXPECT_THAT(error.at("localizedDescription").get<std::string>(),
                StartsWith("Azure DevOps cannot be asked yet"));
}

}  // namespace
