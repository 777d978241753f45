// The programs that docs/ quotes, each run to its end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/helpers/Program.h"
#include "tests/helpers/TemporaryFolder.h"
#include "tools/korvogit-emulator/Description.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace {

using testing::HasSubstr;

Ended runGuide(const std::string& name,
               const std::string& emulatorProgram = KORVOGIT_EMULATOR_PROGRAM) {
    std::istringstream list(GUIDE_PROGRAMS);
    for (std::string path; std::getline(list, path, ':');) {
        if (std::filesystem::path(path).filename() == "korvogit-guide-" + name) {
            return run({.program = path, .environment = {{"KORVOGIT_EMULATOR", emulatorProgram}}});
        }
    }
    throw std::invalid_argument("There is no guide " + name);
}

/// What the guide starts is not the emulator, but says where this one is.
Ended runGuideAgainst(const emulator::Server& server, const std::string& name) {
    const rkt::tests::TemporaryFolder folder;
    const auto program = folder.path() / "emulator";
    std::ofstream script(program);
    script << "#!/bin/sh\ncat <<'END'\n";
    emulator::describeAsJSON(server, script);
    script << "END\n";
    script.close();
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    return runGuide(name, program);
}

TEST(Guide, SignsInAndRenewsTheToken) {
    const auto ended = runGuide("accounts");
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, HasSubstr("GitHub Enterprise\n  asks for an address\n"));
    EXPECT_THAT(ended.output, HasSubstr("\nSigned in.\nRenewed.\nThe token is good.\n"));
}

TEST(Guide, TestsAnApplicationWithTheEmulator) {
    const auto ended = runGuide("emulator");
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output,
              "ok      a right token is accepted\n"
              "ok      a wrong token is refused\n"
              "ok      the limit of requests is told\n");
}

TEST(Guide, TellsWhatToDoAboutAnError) {
    const auto ended = runGuide("errors");
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output,
                HasSubstr("Unauthorized 401 Unauthorized\n"
                          "  Check the user name and the token, or sign in again.\n"));
    EXPECT_THAT(ended.output, HasSubstr("The connection to the server was lost.\n  Check the n"));
}

TEST(Guide, WaitsNoLongerThanToldTo) {
    const auto ended = runGuide("networks");
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "The server did not answer in time.\n");
}

TEST(Guide, ListsAllRepositoriesOfEachService) {
    const auto ended = runGuide("paging");
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output,
              "GitHub: 100 37\n"
              "GitHubEnterprise: 100 37\n"
              "GitLab: 100 37\n"
              "GitLabSelfHosted: 100 37\n"
              "Bitbucket: 100 37\n"
              "BitbucketServer: 100 37\n");
}

TEST(Guide, ListsEachRepositoryWhoseIdentifierIsEmpty) {
    emulator::Server server;
    const emulator::Match listing{.path = "/2.0/repositories"};
    server.script(listing, emulator::jsonAnswer(200, R"({"values": [
        {"uuid": "", "full_name": "o/a"}, {"uuid": "", "full_name": "o/b"}]})"),
                  1);
    server.script(listing, emulator::jsonAnswer(200, R"({"values": []})"));
    const auto ended = runGuideAgainst(server, "paging");
    EXPECT_EQ(ended.error, "");
    EXPECT_THAT(ended.output, HasSubstr("\nBitbucket: 2\n"));
}

TEST(Guide, SaysThatMoreMayFollowEmptyPages) {
    emulator::Server server;
    auto empty = emulator::jsonAnswer(200, "[]");
    empty.headers.add("Link", "<" + server.httpsURL() + "/next>; rel=\"next\"");
    server.script({.path = "/api/v3/user/repos"}, empty);
    const auto ended = runGuideAgainst(server, "paging");
    EXPECT_EQ(ended.error, "");
    EXPECT_THAT(ended.output, HasSubstr("\nGitHubEnterprise: The list is not complete.\n"));
    EXPECT_THAT(ended.output, HasSubstr("\nGitLab: 100 37\n"));
}

TEST(Guide, HasATableOfTextsOfItsOwn) {
    const auto ended = runGuide("translations");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "Personal Access Token for Depot\n");
}

}  // namespace
