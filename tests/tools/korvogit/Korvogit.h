// The program korvogit against the emulator.

#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/helpers/Program.h"
#include "tools/korvogit-emulator/Emulator.h"

using Arguments = std::vector<std::string>;

inline Arguments operator+(Arguments left, const Arguments& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Launch commandLine(Arguments arguments) {
    return {.program = KORVOGIT_PROGRAM, .arguments = std::move(arguments)};
}

/// Tests of the program that ask the emulator over HTTPS.
class KorvogitTest : public testing::Test {
protected:
    /// Octavia's account at public GitHub, whose host leads to the emulator.
    Arguments account() const {
        return Arguments{"--service", "GitHub", "--user", "octavia"} + network();
    }

    Arguments network() const {
        return {"--cacert", server.caFile().string(), "--connect-to",
                "api.github.com:443:127.0.0.1:" + std::to_string(server.httpsPort())};
    }

    /// With octavia's token in the environment.
    Launch launch(Arguments arguments) const {
        Launch launch = commandLine(std::move(arguments));
        launch.environment["KORVOGIT_TOKEN"] = "demo-token-octavia";
        return launch;
    }

    Ended validate(const Arguments& more = {}) const {
        return run(launch(Arguments{"validate"} + account() + more));
    }

    Ended repositories(const Arguments& more = {}) const {
        return run(launch(Arguments{"repositories"} + account() + more));
    }

    nlohmann::json repositoriesJSON(const Arguments& more = {}) const {
        return nlohmann::json::parse(repositories(more + Arguments{"--format", "json"}).output);
    }

    /// Answers the next listings with this.
    /// @param link  the value of a Link header; empty: none
    void answerListings(std::string body, const std::string& link = "") {
        auto answer = emulator::jsonAnswer(200, std::move(body));
        if (!link.empty()) answer.headers.add("Link", link);
        server.script({.path = "/user/repos"}, answer);
    }

    emulator::Server server;
};
