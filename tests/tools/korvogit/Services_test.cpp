#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(KorvogitServices, PrintsWhatEachClassAnswersAsJSON) {
    const Ended ended = run(commandLine({"services", "--format", "json"}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
    const auto services = nlohmann::ordered_json::parse(ended.output);
    EXPECT_EQ(services.size(), 8U);
    EXPECT_EQ(services.at("GitHub").dump(),
              R"({"localizedName":"GitHub","defaultURL":"https://github.com",)"
              R"("requiresCustomURL":false,"supportedCredentialTypes":["OAuth2","Token"],)"
              R"("personalAccessTokenHelpURL":"https://docs.github.com/en/authentication/)"
              R"(keeping-your-account-and-data-secure/managing-your-personal-access-tokens"})");
    EXPECT_EQ(services.at("GitHubEnterprise").at("requiresCustomURL"), true);
    EXPECT_EQ(services.at("GitHubEnterprise").at("defaultURL"), nullptr);
    EXPECT_EQ(services.at("AzureDevOps").at("supportedCredentialTypes"), json::array());
    EXPECT_EQ(services.at("AzureDevOps").at("personalAccessTokenHelpURL"), nullptr);
}

TEST(KorvogitServices, PrintsATable) {
    const Ended ended = run(commandLine({"services"}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, StartsWith("TYPE "));
    EXPECT_THAT(ended.output, AllOf(HasSubstr("\nGitHub             GitHub "),
                                    HasSubstr("\nGitHubEnterprise   GitHub Enterprise ")));
}

TEST(KorvogitHelp, ShowsWhereTheSecretComesFromAndExamples) {
    const Ended ended = run(commandLine({"--help"}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
    EXPECT_THAT(ended.output,
                AllOf(HasSubstr("KORVOGIT_TOKEN"), HasSubstr("--token-stdin"),
                      HasSubstr("Exit status"), HasSubstr("Examples:"), HasSubstr("validate")));
}

TEST(KorvogitHelp, OfASubcommandNamesItsOptions) {
    const Ended ended = run(commandLine({"repositories", "--help"}));
    EXPECT_EQ(ended.status, 0);
    for (const char* option :
         {"--service", "--url", "--user", "--credential-type", "--token-stdin", "--page",
          "--per-page", "--sort", "--direction", "--state", "--visibility", "--format", "--cacert",
          "--connect-to", "--proxy", "--timeout"}) {
        EXPECT_THAT(ended.output, HasSubstr(std::string("  ") + option + " "));
    }
}

TEST(KorvogitVersion, IsThatOfTheProject) {
    const Ended ended = run(commandLine({"--version"}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, testing::MatchesRegex("korvogit [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
