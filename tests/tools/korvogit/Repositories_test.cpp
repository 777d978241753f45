#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Korvogit.h"

namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using testing::HasSubstr;
using testing::Not;

class KorvogitRepositories : public KorvogitTest {
protected:
    std::vector<emulator::QueryItem> query(const Arguments& more) {
        server.forgetRequests();
        EXPECT_EQ(repositories(more).status, 0);
        return server.requests().at(0).queryItems();
    }

    std::string outputFor(const std::string& body, const std::string& format) {
        answerListings(body);
        const Ended ended = repositories({"--format", format});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.error, "");
        return ended.output;
    }
};

using Query = std::vector<emulator::QueryItem>;

TEST_F(KorvogitRepositories, PrintsAPageAsJSONWithAllPropertiesInTheirOrder) {
    const Ended ended = repositories({"--page", "3", "--per-page", "1", "--format", "json"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
    const auto page = ordered_json::parse(ended.output);
    std::vector<std::string> members;
    for (const auto& [name, value] : page.items()) members.push_back(name);
    EXPECT_THAT(members, testing::ElementsAre("error", "linkRelations", "page",
                                              "totalNumberOfPages", "results"));
    EXPECT_EQ(page.at("error"), nullptr);
    EXPECT_EQ(page.at("page"), 3);
    EXPECT_EQ(page.at("totalNumberOfPages"), 137);
    EXPECT_EQ(page.at("linkRelations").at("next"),
              "https://api.github.com/user/repos?page=4&per_page=1");

    ASSERT_EQ(page.at("results").size(), 1U);
    members.clear();
    for (const auto& [name, value] : page.at("results")[0].items()) members.push_back(name);
    EXPECT_THAT(members, testing::ElementsAre(
                             "identifier", "name", "fullName", "descriptiveText", "path",
                             "fullPath", "ownerIdentifier", "ownerName", "state", "visibility",
                             "isFork", "numberOfStars", "numberOfForks", "avatarURL", "webURL",
                             "SSHRepositoryURL", "HTTPSRepositoryURL", "defaultBranchName"));
}

TEST_F(KorvogitRepositories, PrintsEveryKindOfValueExactly) {
    const std::string output = outputFor(
        R"([{"id": 18446744073709551615, "name": "n", "full_name": "o/n", "description": "d",
            "owner": {"id": -9223372036854775808, "login": "o"}, "archived": true,
            "visibility": "internal", "fork": false, "forks_count": 0, "stargazers_count": 2.5,
            "html_url": "https://h/o/n", "ssh_url": "git@h:o/n.git",
            "clone_url": "https://h/o/n.git", "default_branch": "main"},
            {"id": true, "fork": 1, "stargazers_count": 0.1}])",
        "json");
    const auto page = ordered_json::parse(output);
    EXPECT_EQ(
        page.at("results")[0].dump(),
        R"({"identifier":18446744073709551615,"name":"n","fullName":"o/n",)"
        R"("descriptiveText":"d","path":null,"fullPath":null,)"
        R"("ownerIdentifier":-9223372036854775808,"ownerName":"o","state":"closed",)"
        R"("visibility":"internal","isFork":false,"numberOfStars":2.5,"numberOfForks":0,)"
        R"("avatarURL":null,"webURL":"https://h/o/n",)"
        R"("SSHRepositoryURL":"ssh://git@h/o/n.git","HTTPSRepositoryURL":"https://h/o/n.git",)"
        R"("defaultBranchName":"main"})");
    EXPECT_EQ(page.at("results")[1].at("identifier"), true);
    EXPECT_EQ(page.at("results")[1].at("isFork"), 1);
    EXPECT_EQ(page.at("results")[1].at("name"), nullptr);
    EXPECT_THAT(output, HasSubstr("\"numberOfStars\": 0.1,"));
    EXPECT_EQ(page.at("linkRelations"), nullptr);
    EXPECT_EQ(page.at("page"), 1);
    EXPECT_EQ(page.at("totalNumberOfPages"), 0);
}

TEST_F(KorvogitRepositories, PrintsAnyTextOfAServiceAsJSON) {
    const auto page = json::parse(outputFor(
        R"([{"id": 1, "name": "a\u0000b\"\\\u001b[31m\u007f\u009b\u202e\n\ud83d\ude80é"}])",
        "json"));
    EXPECT_EQ(page.at("results")[0].at("name").get<std::string>(),
              std::string("a\0b\"\\\x1b[31m\x7f\u009b\u202e\n\U0001F680é", 23));
}

TEST_F(KorvogitRepositories, PrintsAnErrorAsJSONWithTheRestNull) {
    server.script({.path = "/user/repos"},
                  emulator::jsonAnswer(422, R"({"message": "Validation Failed"})"));
    const Ended ended = repositories({"--format", "json"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ordered_json::parse(ended.output).dump(),
              R"({"error":{"domain":"RKTKorvoGitServiceErrorDomain","code":422,)"
              R"("localizedDescription":"Unprocessable Content",)"
              R"("localizedRecoverySuggestion":"Validation Failed","URL":null},)"
              R"("linkRelations":null,"page":null,"totalNumberOfPages":null,"results":null})");
}

TEST_F(KorvogitRepositories, FailsWithAnAnswerThatIsNoList) {
    answerListings("{}");
    const Ended printed = repositories({"--format", "json"});
    EXPECT_EQ(printed.status, 1);
    EXPECT_EQ(json::parse(printed.output).at("results"), nullptr);
    EXPECT_EQ(json::parse(printed.output).at("error").at("code"), 3840);

    const Ended told = repositories();
    EXPECT_EQ(told.status, 1);
    EXPECT_EQ(told.output, "");
    EXPECT_EQ(told.error,
              "korvogit: GitHub answered, but not with a list of repositories.\n"
              "  The network works, but what answered is not the service's API. Check --url, and "
              "whether a proxy's or a sign-in page came.\n");
}

TEST_F(KorvogitRepositories, PrintsCSVWithQuotesWhereAFieldNeedsThem) {
    EXPECT_EQ(outputFor(R"([{"id": 7, "name": "a,b", "full_name": "say \"hi\"",
                            "description": "two\r\nlines", "default_branch": "", "fork": true,
                            "stargazers_count": 3, "owner": {"login": " plain blank "}},
                           {"id": true, "name": "=1+1"}])",
                        "csv"),
              "identifier,name,fullName,descriptiveText,path,fullPath,ownerIdentifier,ownerName,"
              "state,visibility,isFork,numberOfStars,numberOfForks,avatarURL,webURL,"
              "SSHRepositoryURL,HTTPSRepositoryURL,defaultBranchName\r\n"
              "7,\"a,b\",\"say \"\"hi\"\"\",\"two\r\nlines\",,,, plain blank ,open,private,true,3,"
              ",,,,,\"\"\r\n"
              "true,=1+1,,,,,,,open,private,,,,,,,,\r\n");
}

// A blank line is no record to most readers.
TEST_F(KorvogitRepositories, PrintsAnUnsetOnlyColumnOfCSVAsAnEmptyText) {
    answerListings(R"([{"description": "x"}, {}, {"description": "z"}])");
    EXPECT_EQ(repositories({"--format", "csv", "--columns", "descriptiveText"}).output,
              "descriptiveText\r\nx\r\n\"\"\r\nz\r\n");
}

TEST_F(KorvogitRepositories, PrintsAnErrorOfACSVListingOnStandardErrorOnly) {
    server.script({.path = "/user/repos"}, emulator::jsonAnswer(503, "{}"));
    const Ended ended = repositories({"--format", "csv"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.error,
              "korvogit: GitHub answered with status 503 (Service Unavailable).\n"
              "  Neither the credentials nor the command are the reason. Try again later; see the "
              "service's status page.\n");
}

TEST_F(KorvogitRepositories, AlignsTheTableByTheWidthThatATerminalShows) {
    EXPECT_EQ(outputFor(R"([{"full_name": "日本/工具", "stargazers_count": 5, "description": "x"},
                            {"full_name": "e\u0301t/🚀", "stargazers_count": 12345},
                            {"name": "line\nend\u001b", "visibility": "public"}])",
                        "table"),
              "NAME             VISIBILITY  STATE  STARS  FORKS  BRANCH  DESCRIPTION\n"
              "日本/工具        private     open       5      -  -       x\n"
              "e\u0301t/🚀            private     open   12345      -  -       -\n"
              "line\\nend\\u001b  public      open       -      -  -       -\n"
              "\n"
              "Page 1\n");
}

TEST_F(KorvogitRepositories, TellsWhichPageIsNext) {
    EXPECT_THAT(repositories({"--per-page", "10", "--page", "2"}).output,
                HasSubstr("\nPage 2 of 14; the next one: --page 3\n"));
    const std::string last = repositories({"--per-page", "100", "--page", "2"}).output;
    EXPECT_THAT(last, HasSubstr("\nPage 2\n"));
    EXPECT_THAT(last, Not(HasSubstr("next")));
}

TEST_F(KorvogitRepositories, SaysThatAPageIsEmpty) {
    const Ended ended = repositories({"--page", "99"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, testing::StartsWith("No repositories here.\n"));
}

TEST_F(KorvogitRepositories, SendsWhatTheOptionsSay) {
    using testing::UnorderedElementsAre;
    using Item = emulator::QueryItem;
    EXPECT_THAT(query({"--sort", "name", "--direction", "descending", "--visibility", "private",
                       "--page", "2", "--per-page", "5"}),
                UnorderedElementsAre(Item{"sort", "full_name"}, Item{"direction", "desc"},
                                     Item{"visibility", "private"}, Item{"page", "2"},
                                     Item{"per_page", "5"}));
    EXPECT_EQ(query({}), Query());
    EXPECT_EQ(query({"--sort", "created"}), (Query{{"sort", "created"}}));
    EXPECT_EQ(query({"--sort", "updated"}), (Query{{"sort", "updated"}}));
    EXPECT_EQ(query({"--sort", "last-activity"}), (Query{{"sort", "pushed"}}));
    EXPECT_EQ(query({"--direction", "ascending"}), (Query{{"direction", "asc"}}));
}

TEST_F(KorvogitRepositories, PassesNumbersOnAsTheyAre) {
    EXPECT_EQ(query({"--sort", "2", "--direction", "1", "--page", "1"}).size(), 3U);
    EXPECT_EQ(query({"--sort", "6", "--direction", "3"}), Query());
    EXPECT_EQ(query({"--sort", "18446744073709551615"}), Query());
    EXPECT_EQ(query({"--page", "-3"}), (Query{{"page", "-3"}}));
    EXPECT_EQ(query({"--per-page=0"}), (Query{{"per_page", "0"}}));
    EXPECT_EQ(query({"--page", "9223372036854775808"}), (Query{{"page", "9223372036854775808"}}));
}

TEST_F(KorvogitRepositories, SaysThatAServiceCannotBeAskedYetAsJSON) {
    const Ended ended =
        run(commandLine({"repositories", "--service", "AzureDevOpsServer", "--format", "json"}));
    EXPECT_EQ(ended.status, 1);
    const auto page = json::parse(ended.output);
    EXPECT_EQ(page.at("error").at("domain"), "RKTInvalidArgumentException");
    EXPECT_EQ(page.at("results"), nullptr);
}

}  // namespace
