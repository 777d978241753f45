// The examples of main loops, each run to its end against the emulated GitHub.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "tests/helpers/Program.h"
#include "tests/tools/emulator/Client.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace {

/// The programs that were built.
std::vector<std::string> programs() {
    std::vector<std::string> paths;
    std::istringstream list(MAIN_LOOP_PROGRAMS);
    for (std::string path; std::getline(list, path, ':');) paths.push_back(path);
    return paths;
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
    std::string name = std::filesystem::path(info.param).filename();
    std::ranges::replace_if(name, [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

class MainLoop : public testing::TestWithParam<std::string> {
protected:
    /// A code that the emulated GitHub gives to the demo application.
    std::string code() const {
        emulator_test::Client client(server.httpsPort(), {server.caFile(), "github.com"});
        const std::string form = "login=octavia&decision=allow";
        client.send(
            "POST /login/oauth/authorize?client_id=demo-client HTTP/1.1\r\n"
            "Host: github.com\r\nContent-Length: " +
            std::to_string(form.size()) + "\r\n\r\n" + form);
        const auto location = client.receive().header("Location").value_or("");
        return location.substr(location.find("code=") + 5);
    }

    Ended exchange(const std::string& code) const {
        return run({.program = GetParam(),
                    .arguments = {"demo-client", code, server.caFile().string(),
                                  std::to_string(server.httpsPort())},
                    .environment = {{"KORVOGIT_CLIENT_SECRET", "demo-secret"},
                                    {"QT_QPA_PLATFORM", "offscreen"}}});
    }

    emulator::Server server;
};

TEST_P(MainLoop, RunsTheHandlerOfATokenUpdate) {
    const Ended ended = exchange(code());
    EXPECT_EQ(ended.error, "");
    EXPECT_EQ(ended.output, "Signed in.\n");
    EXPECT_EQ(ended.status, 0);
}

TEST_P(MainLoop, TellsThatTheCodeIsWrong) {
    const Ended ended = exchange("wrong");
    EXPECT_EQ(ended.error, "The+code+passed+is+incorrect+or+expired.\n");
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.status, 1);
}

INSTANTIATE_TEST_SUITE_P(Examples, MainLoop, testing::ValuesIn(programs()), testName);

}  // namespace
