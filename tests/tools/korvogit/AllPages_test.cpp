// "korvogit repositories --all".

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <set>

#include "Korvogit.h"

namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// A page of so many repositories whose numbers begin with `first`.
std::string page(int first, int count) {
    json repositories = json::array();
    for (int id = first; id < first + count; ++id) {
        repositories.push_back({{"id", id}, {"full_name", "o/" + std::to_string(id)}});
    }
    return repositories.dump();
}

emulator::Answer answerWithNext(const std::string& body) {
    auto answer = emulator::jsonAnswer(200, body);
    answer.headers.add("Link", R"(<https://api.github.com/user/repos?page=9>; rel="next")");
    return answer;
}

class KorvogitAllPages : public KorvogitTest {
protected:
    static Arguments all(const Arguments& more = {}) {
        return Arguments{"repositories", "--all"} + more;
    }

    Ended listAll(const Arguments& more = {}) const { return run(launch(all(account() + more))); }

    /// GitHub's answers to page 1, 2, … instead of the emulator's own.
    void answerPages(const std::vector<emulator::Answer>& pages) {
        for (std::size_t i = 0; i < pages.size(); ++i) {
            const auto number = std::to_string(i + 1);
            server.script({.path = "/user/repos",
                           .also =
                               [number](const emulator::Request& request) {
                                   return request.queryValue("page") == number;
                               }},
                          pages[i]);
        }
    }
};

/// A service as the emulator plays it.
struct Service {
    std::string type;
    std::string host;  ///< empty: a server of one's own
    std::string credentialType;
    std::string secret;
    /// With seven on a page: how many requests the 137 repositories need.
    std::size_t requests;
};

void PrintTo(const Service& service, std::ostream* stream) {
    *stream << service.type;
}

class KorvogitAllPagesOf : public KorvogitAllPages, public testing::WithParamInterface<Service> {
protected:
    Ended list(const std::string& login, const Arguments& more) const {
        const auto& service = GetParam();
        Arguments arguments{"--service",
                            service.type,
                            "--user",
                            login,
                            "--cacert",
                            server.caFile().string(),
                            "--credential-type",
                            service.credentialType};
        const auto port = std::to_string(server.httpsPort());
        arguments =
            arguments + (service.host.empty()
                             ? Arguments{"--url", server.httpsURL()}
                             : Arguments{"--connect-to", service.host + ":443:127.0.0.1:" + port});
        Launch launched = launch(all(arguments + more));
        launched.environment["KORVOGIT_TOKEN"] = service.secret + login;
        return run(launched);
    }
};

TEST_P(KorvogitAllPagesOf, AreListedToTheLastRepositoryOnce) {
    const Ended ended = list("octavia", {"--per-page", "7", "--format", "jsonl"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
    std::set<std::string> names;
    const auto lines = linesOf(ended.output);
    for (const auto& line : lines) names.insert(json::parse(line).at("name").dump());
    EXPECT_THAT(lines, SizeIs(137));
    EXPECT_THAT(names, SizeIs(137));
    EXPECT_EQ(server.requestCount(), GetParam().requests);
}

TEST_P(KorvogitAllPagesOf, AreAsLongAsCanBe) {
    const Ended ended = list("archive", {"--format", "csv", "--columns", "identifier"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(linesOf(ended.output), SizeIs(4201));
    EXPECT_LE(server.requestCount(), 43U);
}

TEST_P(KorvogitAllPagesOf, MayHaveNothing) {
    const Ended ended = list("bare", {"--format", "json"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(
        ordered_json::parse(ended.output).dump(),
        R"({"error":null,"linkRelations":null,"page":1,"totalNumberOfPages":1,"results":[]})");
    EXPECT_EQ(server.requestCount(), 1U);
}

TEST_P(KorvogitAllPagesOf, AreOneObjectAsJSON) {
    const Ended ended = list("octavia", {"--per-page", "50", "--format", "json"});
    EXPECT_EQ(ended.status, 0);
    const auto document = json::parse(ended.output);
    EXPECT_EQ(document.at("error"), nullptr);
    EXPECT_EQ(document.at("page"), 3);
    EXPECT_EQ(document.at("totalNumberOfPages"), 3);
    EXPECT_THAT(document.at("results"), SizeIs(137));
}

// GitHub and GitLab say with a link that there is another page; the others are asked until a page
// is empty.
const Service services[] = {
    {"GitHub", "api.github.com", "Token", "demo-token-", 20},
    {"GitHubEnterprise", "", "Token", "demo-token-", 20},
    {"GitLab", "gitlab.com", "Token", "demo-token-", 20},
    {"GitLabSelfHosted", "", "Token", "demo-token-", 20},
    {"Bitbucket", "api.bitbucket.org", "Basic", "demo-password-", 21},
    {"BitbucketServer", "", "Basic", "demo-password-", 21},
};

INSTANTIATE_TEST_SUITE_P(Services, KorvogitAllPagesOf, testing::ValuesIn(services),
                         [](const auto& test) { return test.param.type; });

TEST_F(KorvogitAllPages, ArePrintedAsTheyArrive) {
    answerPages({answerWithNext(page(1, 2))});
    auto hold = server.hold({.also = [](const emulator::Request& request) {
        return request.queryValue("page") == "2";
    }});
    for (const char* format : {"jsonl", "csv"}) {
        Launch launched = launch(all(account() + Arguments{"--format", format}));
        launched.terminalColumns = 80;
        Program program(launched);
        program.waitUntilShown("o/2");
        program.signal(SIGINT);
        EXPECT_EQ(program.wait().status, 130);
    }
}

// A terminal holds less than such a page: until it is read, the program is between two questions.
TEST_F(KorvogitAllPages, EndWithTheErrorWhenASignalComesBetweenThem) {
    answerPages({answerWithNext(page(1, 1000)), answerWithNext(page(1001, 2))});
    auto hold = server.hold({.also = [](const emulator::Request& request) {
        return request.queryValue("page") == "2";
    }});
    Launch launched = launch(all(account() + Arguments{"--format", "jsonl"}));
    launched.terminalColumns = 80;
    Program program(launched);
    program.waitUntilShown("o/1\"");
    program.signal(SIGINT);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 130);
    const auto lines = linesOf(ended.output);
    ASSERT_GE(lines.size(), 1001U);
    EXPECT_THAT(lines[999], HasSubstr("\"o/1000\""));
    EXPECT_THAT(lines.back(), HasSubstr("\"code\":-999"));
}

TEST_F(KorvogitAllPages, EndAtOnceWhenTwoSignalsComeBetweenThem) {
    answerPages({answerWithNext(page(1, 1000))});
    Launch launched = launch(all(account() + Arguments{"--format", "jsonl"}));
    launched.terminalColumns = 80;
    Program program(launched);
    program.waitUntilShown("o/1\"");
    program.signal(SIGINT);
    program.signal(SIGTERM);
    const Ended ended = program.wait();
    EXPECT_THAT(ended.status, AnyOf(130, 143));
    EXPECT_EQ(ended.output.find("o/1000"), std::string::npos);
}

TEST_F(KorvogitAllPages, KeepWhatWasPrintedWhenCancelled) {
    answerPages({answerWithNext(page(1, 2))});
    auto hold = server.hold({.also = [](const emulator::Request& request) {
        return request.queryValue("page") == "2";
    }});
    std::size_t held = 0;
    const auto cancelled = [&](const std::string& format) {
        Program program(launch(all(account() + Arguments{"--format", format})));
        EXPECT_TRUE(hold.waitUntilReached(++held));
        program.signal(SIGINT);
        Ended ended = program.wait();
        EXPECT_EQ(ended.status, 130) << format;
        return ended;
    };

    const auto lines = linesOf(cancelled("jsonl").output);
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_EQ(json::parse(lines[1]).at("fullName"), "o/2");
    EXPECT_EQ(json::parse(lines[2]).at("error").at("code"), -999);

    EXPECT_THAT(linesOf(cancelled("csv").output), SizeIs(3));

    const auto document = json::parse(cancelled("json").output);
    EXPECT_EQ(document.at("error").at("code"), -999);
    EXPECT_THAT(document.at("results"), SizeIs(2));
    EXPECT_EQ(document.at("page"), 1);
    EXPECT_EQ(document.at("totalNumberOfPages"), nullptr);

    const Ended table = cancelled("table");
    EXPECT_THAT(table.output, HasSubstr("\no/2 "));
    EXPECT_THAT(table.output, EndsWith("\n\n2 repositories\n"));
    EXPECT_THAT(table.error, StartsWith("korvogit: The request was cancelled.\n"));
}

TEST_F(KorvogitAllPages, EndWithTheErrorOfALaterPage) {
    answerPages({answerWithNext(page(1, 2)), emulator::jsonAnswer(503, R"({"message": "Busy"})")});
    const Ended ended = listAll({"--format", "jsonl"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error, "");
    const auto lines = linesOf(ended.output);
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_EQ(lines[2], R"({"error":{"domain":"RKTKorvoGitServiceErrorDomain","code":503,)"
                        R"("localizedDescription":"Service Unavailable",)"
                        R"("localizedRecoverySuggestion":"Busy","URL":null}})");

    const Ended csv = listAll({"--format", "csv", "--columns", "fullName"});
    EXPECT_EQ(csv.status, 1);
    EXPECT_EQ(csv.output, "fullName\r\no/1\r\no/2\r\n");
    EXPECT_THAT(csv.error, StartsWith("korvogit: GitHub answered with status 503"));
}

TEST_F(KorvogitAllPages, EndWithAnErrorWhereOneIsNoList) {
    const auto fails = [this](std::size_t before) {
        const Ended printed = listAll({"--format", "json"});
        EXPECT_EQ(printed.status, 1);
        const auto document = json::parse(printed.output);
        EXPECT_EQ(document.at("error").at("code"), 3840);
        EXPECT_EQ(document.at("error").at("localizedDescription"),
                  "GitHub answered, but not with a list of repositories.");
        EXPECT_EQ(document.at("results").size(), before);
        EXPECT_EQ(document.at("results").is_null(), before == 0);
        EXPECT_EQ(document.at("totalNumberOfPages"), nullptr);
        const Ended lines = listAll({"--format", "jsonl"});
        EXPECT_EQ(lines.status, 1);
        EXPECT_THAT(linesOf(lines.output), SizeIs(before + 1));
        EXPECT_THAT(lines.output, HasSubstr("{\"error\":"));
        const Ended table = listAll();
        EXPECT_EQ(table.status, 1);
        EXPECT_THAT(
            table.error,
            StartsWith("korvogit: GitHub answered, but not with a list of repositories.\n"));
    };
    answerListings("{}");
    fails(0);
    server.clearScripts();
    answerPages({answerWithNext(page(1, 2)), emulator::jsonAnswer(200, "{}")});
    fails(2);
}

TEST_F(KorvogitAllPages, DoNotEndWithAnEmptyOneThatLinksTheNext) {
    answerPages({answerWithNext("[]"), answerWithNext(page(1, 2)), answerWithNext("[]"),
                 emulator::jsonAnswer(200, page(3, 1))});
    const Ended ended = listAll({"--format", "json"});
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.status, 0);
    const auto document = json::parse(ended.output);
    EXPECT_THAT(document.at("results"), SizeIs(3));
    EXPECT_EQ(document.at("page"), 4);
    EXPECT_EQ(document.at("totalNumberOfPages"), 4);
}

// What follows them, if anything, is missing, and no script may take that for all there is.
TEST_F(KorvogitAllPages, EndWithAnErrorWhereEmptyOnesGoOnForEver) {
    answerPages({answerWithNext(page(1, 2))});
    answerListings("[]", "<https://api.github.com/user/repos?page=9>; rel=\"next\"");
    const Ended csv = listAll({"--format", "csv", "--columns", "fullName"});
    EXPECT_EQ(csv.status, 1);
    EXPECT_EQ(csv.output, "fullName\r\no/1\r\no/2\r\n");
    EXPECT_EQ(csv.error,
              "korvogit: GitHub gave one empty page after another, each with a link to a next one: "
              "the list ends here, and may lack repositories.\n"
              "  The credentials were not refused. Try again; should it stay, see whether a proxy "
              "changes the answers.\n");
    EXPECT_EQ(server.requestCount(), 22U);

    const Ended printed = listAll({"--format", "json"});
    EXPECT_EQ(printed.status, 1);
    EXPECT_EQ(printed.error, "");
    const auto document = json::parse(printed.output);
    EXPECT_EQ(document.at("error").at("code"), -1011);
    EXPECT_THAT(document.at("results"), SizeIs(2));
    EXPECT_EQ(document.at("page"), 1);
    EXPECT_EQ(document.at("totalNumberOfPages"), nullptr);
    EXPECT_THAT(linesOf(listAll({"--format", "jsonl"}).output).back(), StartsWith("{\"error\":"));
}

TEST_F(KorvogitAllPages, RepeatThemselvesWhereSomeOfTheLastAreEmpty) {
    answerPages({answerWithNext(page(1, 2)), answerWithNext(page(2, 1))});
    answerListings("[]", "<https://api.github.com/user/repos?page=9>; rel=\"next\"");
    const Ended ended = listAll({"--format", "csv", "--columns", "fullName"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.error, HasSubstr("what follows page 1 is empty or was listed before"));
    EXPECT_EQ(server.requestCount(), 22U);
}

// As when a gateway drops the header now and then.
TEST_F(KorvogitAllPages, AreAskedForAsManyAsAnEarlierOneTold) {
    auto first = answerWithNext(page(1, 2));
    first.headers.add("Link", R"(<https://api.github.com/user/repos?page=3>; rel="last")");
    answerPages(
        {first, emulator::jsonAnswer(200, page(3, 2)), emulator::jsonAnswer(200, page(5, 1))});
    const Ended ended = listAll({"--format", "csv", "--columns", "fullName"});
    EXPECT_EQ(ended.error, "");
    EXPECT_THAT(linesOf(ended.output), SizeIs(6));
    EXPECT_EQ(server.requestCount(), 3U);
}

TEST_F(KorvogitAllPages, EndWhereAServiceRepeatsOne) {
    server.script({.path = "/user/repos"}, answerWithNext(page(1, 3)));
    const Ended ended = listAll({"--format", "csv", "--columns", "fullName"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "fullName\r\no/1\r\no/2\r\no/3\r\n");
    EXPECT_THAT(
        ended.error,
        StartsWith("korvogit: GitHub repeats itself: what follows page 1 is empty or was "
                   "listed before.\n  Neither the credentials nor the network are the reason."));
    EXPECT_EQ(server.requestCount(), 22U);
}

TEST_F(KorvogitAllPages, HaveARepositoryOnceThatMovedBetweenTwo) {
    answerPages({answerWithNext(page(1, 3)), emulator::jsonAnswer(200, page(3, 3))});
    const Ended ended = listAll({"--format", "csv", "--columns", "fullName"});
    EXPECT_EQ(ended.output, "fullName\r\no/1\r\no/2\r\no/3\r\no/4\r\no/5\r\n");
    EXPECT_EQ(ended.error, "");
}

TEST_F(KorvogitAllPages, OfRepositoriesWithoutIdentifierAreComparedWhole) {
    answerPages({answerWithNext(R"([{"full_name": "o/a"}, {"id": "", "full_name": "o/b"}])"),
                 emulator::jsonAnswer(200, R"([{"id": "", "full_name": "o/b"},
                                               {"id": "", "full_name": "o/c"}])")});
    EXPECT_EQ(listAll({"--format", "csv", "--columns", "fullName"}).output,
              "fullName\r\no/a\r\no/b\r\no/c\r\n");
}

// As when a service, or what stands before it, blanks them.
TEST_F(KorvogitAllPages, OfRepositoriesWithAnEmptyIdentifierAreComparedWhole) {
    server.script({.path = "/2.0/repositories"}, [](const emulator::Request& request) {
        const bool isFirst = request.queryValue("page") == "1";
        const bool isSecond = request.queryValue("page") == "2";
        json values = json::array();
        if (isFirst) values.push_back({{"uuid", ""}, {"full_name", "o/a"}});
        if (isFirst || isSecond) values.push_back({{"uuid", ""}, {"full_name", "o/b"}});
        if (isSecond) values.push_back({{"uuid", ""}, {"full_name", "o/c"}});
        return emulator::jsonAnswer(200, json{{"values", values}}.dump());
    });
    const auto port = std::to_string(server.httpsPort());
    const Ended ended =
        run(launch(all({"--service", "Bitbucket", "--cacert", server.caFile().string(),
                        "--connect-to", "api.bitbucket.org:443:127.0.0.1:" + port, "--format",
                        "csv", "--columns", "identifier,fullName"})));
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.output, "identifier,fullName\r\n\"\",o/a\r\n\"\",o/b\r\n\"\",o/c\r\n");
}

// A server may allow fewer on a page than are asked for.
TEST_F(KorvogitAllPages, OfABitbucketServerFollowOneAnotherWithoutAGap) {
    server.script({.path = "/rest/api/1.0/repos"}, [](const emulator::Request& request) {
        const int start = std::stoi(request.queryValue("start").value_or("0"));
        json values = json::array();
        for (int id = start + 1; id <= std::min(start + 3, 8); ++id) {
            values.push_back({{"id", id}, {"name", std::to_string(id)}});
        }
        return emulator::jsonAnswer(200, json{{"start", start}, {"values", values}}.dump());
    });
    const Ended ended =
        run(launch(all({"--service", "BitbucketServer", "--url", server.httpsURL(), "--cacert",
                        server.caFile().string(), "--format", "csv", "--columns", "name"})));
    EXPECT_EQ(ended.output, "name\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n");
    std::vector<std::string> starts;
    for (const auto& request : server.requests()) {
        starts.push_back(request.queryValue("start").value_or(""));
        EXPECT_EQ(request.queryValue("limit"), "1000");
    }
    EXPECT_THAT(starts, ElementsAre("0", "3", "6", "8"));
}

// Repositories that the account may not see count among those to skip: what follows them comes
// again until as many came.
TEST_F(KorvogitAllPages, OfABitbucketServerThatHidesSomeAreComplete) {
    server.script({.path = "/rest/api/1.0/repos"}, [](const emulator::Request& request) {
        const int start = std::stoi(request.queryValue("start").value_or("0"));
        json values = json::array();
        for (int id = start; id < 60 && values.size() < 10; ++id) {
            if (id < 5 || id >= 45) values.push_back({{"id", id}, {"name", std::to_string(id)}});
        }
        return emulator::jsonAnswer(200, json{{"start", start}, {"values", values}}.dump());
    });
    const Ended ended =
        run(launch(all({"--service", "BitbucketServer", "--url", server.httpsURL(), "--cacert",
                        server.caFile().string(), "--format", "csv", "--columns", "name"})));
    EXPECT_EQ(ended.error, "");
    const auto lines = linesOf(ended.output);
    ASSERT_THAT(lines, SizeIs(21));
    EXPECT_THAT(lines.back(), StartsWith("59"));
}

TEST_F(KorvogitAllPages, OfABitbucketServerThatRepeatsItselfEnd) {
    server.script({.path = "/rest/api/1.0/repos"},
                  emulator::jsonAnswer(200, R"({"values": [{"id": 1, "name": "a"}]})"));
    const Ended ended =
        run(launch(all({"--service", "BitbucketServer", "--url", server.httpsURL(), "--cacert",
                        server.caFile().string(), "--format", "csv", "--columns", "name"})));
    EXPECT_EQ(ended.output, "name\r\na\r\n");
    EXPECT_THAT(ended.error, HasSubstr("repeats itself"));
    EXPECT_EQ(server.requestCount(), 22U);
}

TEST_F(KorvogitAllPages, DoNotEndAtLinksThatTellNothingOfPages) {
    auto first = emulator::jsonAnswer(200, page(1, 3));
    first.headers.add("Link", "<https://cdn.example/>; rel=preconnect");
    answerPages({first, emulator::jsonAnswer(200, page(4, 2))});
    const Ended ended = listAll({"--format", "csv", "--columns", "fullName"});
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.output, "fullName\r\no/1\r\no/2\r\no/3\r\no/4\r\no/5\r\n");
}

TEST_F(KorvogitAllPages, KeepTheSelection) {
    EXPECT_EQ(
        listAll({"--sort", "name", "--direction", "descending", "--visibility", "private"}).status,
        0);
    for (const auto& request : server.requests()) {
        EXPECT_EQ(request.queryValue("sort"), "full_name");
        EXPECT_EQ(request.queryValue("direction"), "desc");
        EXPECT_EQ(request.queryValue("visibility"), "private");
        EXPECT_EQ(request.queryValue("per_page"), "100");
    }
}

TEST_F(KorvogitAllPages, AreOneTableWithTheNumberOfRepositories) {
    const Ended ended = listAll({"--per-page", "50"});
    const auto lines = linesOf(ended.output);
    ASSERT_THAT(lines, SizeIs(140));
    EXPECT_THAT(lines.front(), StartsWith("NAME  "));
    EXPECT_EQ(lines.back(), "137 repositories");
    EXPECT_EQ(ended.error, "");
}

TEST_F(KorvogitAllPages, OfAnUnaskableServiceAreAnError) {
    const Ended ended = run(launch(all({"--service", "AzureDevOps", "--format", "jsonl"})));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(json::parse(ended.output).at("error").at("domain"), "RKTInvalidArgumentException");
}

TEST_F(KorvogitAllPages, StopWhenNobodyReadsThem) {
    Launch launched = launch(all(account() + Arguments{"--format", "jsonl"}));
    launched.output = Launch::Output::BrokenPipe;
    const Ended ended = run(launched);
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(server.requestCount(), 1U);
}

}  // namespace
