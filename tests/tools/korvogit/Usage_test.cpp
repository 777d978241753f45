#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// A command line that cannot be obeyed, and what the sentence about it has to hold.
struct Wrong {
    std::string what;
    Arguments arguments;
    std::string sentence;
};

void PrintTo(const Wrong& wrong, std::ostream* stream) {
    *stream << wrong.what;
}

class KorvogitUsage : public testing::TestWithParam<Wrong> {};

TEST_P(KorvogitUsage, IsRefusedWithASentenceAndStatus2) {
    const Ended ended = run(commandLine(GetParam().arguments));
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.error, AllOf(StartsWith("korvogit: "), HasSubstr(GetParam().sentence),
                                   HasSubstr("\n  Nothing was sent. "), EndsWith("--help'.\n")));
}

Arguments validate(const Arguments& more) {
    return Arguments{"validate", "--service", "GitHub"} + more;
}

Arguments repositories(const Arguments& more) {
    return Arguments{"repositories", "--service", "GitHub"} + more;
}

const Wrong wrongLines[] = {
    {"NoSubcommand", {}, "A subcommand is required"},
    {"UnknownSubcommand", {"frobnicate"}, "neither an option nor a subcommand"},
    {"UnknownOption", validate({"--frobnicate"}), "no such option: --frobnicate."},
    {"ExtraArgument", validate({"more"}), "neither an option nor a subcommand"},
    {"TwoSubcommands", validate({"services"}), "neither an option nor a subcommand"},
    {"NoService", {"validate"}, "--service is required"},
    {"UnknownServiceType",
     {"validate", "--service", "github"},
     "there is no service type \"github\"; the known ones are AzureDevOps, AzureDevOpsServer, "
     "Bitbucket, BitbucketServer, GitHub, GitHubEnterprise, GitLab, GitLabSelfHosted"},
    {"UnknownCredentialType", validate({"--credential-type", "Password"}),
     "--credential-type: must be Token, OAuth2 or Basic"},
    {"TextThatIsNoURL", validate({"--url", "https://git example.com"}),
     "--url: the text is not a URL"},
    {"UnknownFormat", repositories({"--format", "xml"}), "must be one of table|json|csv|jsonl"},
    {"FormatOfAnotherSubcommand", validate({"--format", "csv"}), "must be one of table|json."},
    {"FractionalPage", repositories({"--page", "1.5"}), "--page: must be an integer"},
    {"EmptyPage", repositories({"--page="}), "--page: must be an integer"},
    {"HugePage", repositories({"--per-page", "18446744073709551616"}),
     "--per-page: must be an integer of at most 64 bits"},
    {"UnknownSortKey", repositories({"--sort", "stars"}),
     "--sort: must be one of default, identifier, name, created, updated, last-activity, or a "
     "number"},
    {"NegativeSortKey", repositories({"--sort", "-1"}), "--sort: must be one of"},
    {"UnknownDirection", repositories({"--direction", "up"}),
     "--direction: must be one of default, ascending, descending, or a number"},
    {"UnknownState", repositories({"--state", "opened"}), "--state: must be open or closed"},
    {"NumberAsState", repositories({"--state", "1"}), "--state: must be open or closed"},
    {"UnknownVisibility", repositories({"--visibility", "hidden"}),
     "--visibility: must be public, private or internal"},
    {"EmptyVisibility", repositories({"--visibility="}),
     "--visibility: must be public, private or internal"},
    {"AllAndAPage", repositories({"--all", "--page", "2"}), "--all excludes --page"},
    {"AllByNone", repositories({"--all", "--per-page=0"}),
     "--per-page: must be from 1 to 1000000 for --all"},
    {"AllByTooMany", repositories({"--all", "--per-page=1000001"}),
     "--per-page: must be from 1 to 1000000 for --all"},
    {"AllByMoreThanSigned", repositories({"--all", "--per-page=18446744073709551615"}),
     "--per-page: must be from 1 to 1000000 for --all"},
    {"UnknownColumn", repositories({"--columns", "name,stars"}),
     "--columns: there is no property \"stars\"; the properties are identifier, name, fullName, "
     "descriptiveText, path, fullPath, ownerIdentifier, ownerName, state, visibility, isFork, "
     "numberOfStars, numberOfForks, avatarURL, webURL, SSHRepositoryURL, HTTPSRepositoryURL, "
     "defaultBranchName."},
    {"EmptyColumn", repositories({"--columns", "name,"}), "there is no property \"\""},
    {"UnknownSortProperty", repositories({"--sort-by", "stars"}),
     "--sort-by: there is no property \"stars\""},
    {"ColumnsOfJSON", repositories({"--columns", "name", "--format", "json"}),
     "--columns: is for table and csv"},
    {"ColumnsOfJSONLines", repositories({"--columns", "name", "--format", "jsonl"}),
     "--columns: is for table and csv"},
    {"NoTimeout", validate({"--timeout", "0"}), "--timeout: must be a number of seconds"},
    {"TextAfterTimeout", validate({"--timeout", "10s"}), "--timeout: must be a number of seconds"},
    {"EndlessTimeout", validate({"--timeout", "inf"}), "--timeout: must be a number of seconds"},
    {"ProxyWithoutScheme", validate({"--proxy", "proxy:3128"}), "--proxy: must be a URL with http"},
    {"ProxyWithoutHost", validate({"--proxy", "http://"}), "--proxy: must be a URL with http"},
    {"MissingAuthorityFile", validate({"--cacert", "/nonexistent/ca.pem"}),
     "cannot read /nonexistent/ca.pem: No such file or directory"},
    {"DeviceAsAuthorityFile", validate({"--cacert", "/dev/zero"}),
     "/dev/zero must be a file that can be read again"},
    {"FolderAsAuthorityFile", validate({"--cacert", "/"}), "cannot read /: Is a directory"},
    {"EmptyAuthorityFile", validate({"--cacert", "/dev/null"}),
     "cannot read /dev/null: it is empty"},
    {"MappingOfThreeParts", validate({"--connect-to", "a:1:b"}), "must be HOST:PORT:ADDRESS:PORT"},
    {"MappingOfFiveParts", validate({"--connect-to", "a:1:b:2:3"}),
     "must be HOST:PORT:ADDRESS:PORT"},
    {"MappingWithoutHost", validate({"--connect-to", ":1:b:2"}), "must be HOST:PORT:ADDRESS:PORT"},
    {"MappingOfPortZero", validate({"--connect-to", "a:0:b:2"}), "must be HOST:PORT:ADDRESS:PORT"},
    {"MappingOfAHugePort", validate({"--connect-to", "a:1:b:65536"}),
     "must be HOST:PORT:ADDRESS:PORT"},
    {"MappingWithoutBrackets", validate({"--connect-to", "a:1:::1:2"}),
     "must be HOST:PORT:ADDRESS:PORT"},
    {"MappingWithAnOpenBracket", validate({"--connect-to", "a:1:[::1:2"}),
     "must be HOST:PORT:ADDRESS:PORT"},
};

INSTANTIATE_TEST_SUITE_P(Wrong, KorvogitUsage, testing::ValuesIn(wrongLines),
                         [](const auto& test) { return test.param.what; });

}  // namespace
