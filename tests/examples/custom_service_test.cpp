// The example of a service of one's own, in a program that knows nothing of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/helpers/Program.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Optional;

/// AddressSanitizer wants to be the first library of a program, unless it is told otherwise.
std::string sanitizerOptions() {
    const char* const given = std::getenv("ASAN_OPTIONS");
    return std::string(given != nullptr ? given : "") + ":verify_asan_link_order=0";
}

Ended korvogit(std::vector<std::string> arguments, bool withDepot = true) {
    Launch launch{.program = KORVOGIT_PROGRAM, .arguments = std::move(arguments)};
    launch.environment["KORVOGIT_TOKEN"] = "t0ken";
    launch.environment["ASAN_OPTIONS"] = sanitizerOptions();
    if (withDepot) launch.environment["LD_PRELOAD"] = DEPOT_SERVICE_LIBRARY;
    return run(launch);
}

class CustomService : public testing::Test {
protected:
    Ended korvogitAtServer(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--service", "Depot", "--url", server.httpsURL() + "/x",
                                           "--cacert", server.caFile().string()});
        return korvogit(std::move(arguments));
    }
    emulator::Server server;
};

TEST_F(CustomService, IsListedWithTheOthers) {
    const auto with = korvogit({"services", "--format", "json"});
    ASSERT_EQ(with.status, 0) << with.error;
    const json services = json::parse(with.output);
    EXPECT_EQ(services.at("Depot").at("localizedName"), "Depot");
    EXPECT_EQ(services.at("Depot").at("requiresCustomURL"), true);
    EXPECT_EQ(services.at("Depot").at("supportedCredentialTypes"), json::array({"Token"}));
    const auto without = korvogit({"services", "--format", "json"}, false);
    EXPECT_EQ(services.size(), json::parse(without.output).size() + 1);
    EXPECT_THAT(without.output, Not(HasSubstr("Depot")));
}

TEST_F(CustomService, ChecksCredentials) {
    server.script({.path = "/api/me"}, emulator::jsonAnswer(200, "{}"), 1);
    EXPECT_EQ(korvogitAtServer({"validate"}).status, 0);
    EXPECT_THAT(server.requests().back().headers.get("Authorization"),
                Optional(std::string("Bearer t0ken")));
    server.script({.path = "/api/me"}, emulator::jsonAnswer(401, R"({"message": "Ask Jo."})"), 1);
    const auto refused = korvogitAtServer({"validate"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.error, HasSubstr("Ask Jo."));
}

TEST_F(CustomService, ListsRepositories) {
    auto answer = emulator::jsonAnswer(200, R"({"values": [
        {"key": "tools/anvil", "title": "Anvil", "about": "Heavy", "restricted": false,
         "owner": {"handle": "tools"},
         "clone": {"ssh": "git@depot.example:tools/anvil.git",
                   "https": "https://depot.example/tools/anvil.git"}},
        {"key": "tools/bellows"}]})");
    answer.headers.add("Link", "<https://depot.example/?page=4>; rel=\"last\"");
    server.script({.path = "/api/repositories"}, answer);
    const auto ended = korvogitAtServer(
        {"repositories", "--page", "2", "--per-page", "10", "--sort", "name", "--format", "json"});
    ASSERT_EQ(ended.status, 0) << ended.error;
    EXPECT_THAT(server.requests().back().queryItems(),
                ElementsAre(emulator::QueryItem{"order", "title"}, emulator::QueryItem{"page", "2"},
                            emulator::QueryItem{"count", "10"}));
    const json page = json::parse(ended.output);
    EXPECT_EQ(page.at("totalNumberOfPages"), 4);
    const json anvil = page.at("results").at(0);
    EXPECT_EQ(anvil.at("identifier"), "tools/anvil");
    EXPECT_EQ(anvil.at("name"), "Anvil");
    EXPECT_EQ(anvil.at("visibility"), "public");
    EXPECT_EQ(anvil.at("ownerName"), "tools");
    EXPECT_EQ(anvil.at("SSHRepositoryURL"), "ssh://git@depot.example/tools/anvil.git");
    EXPECT_EQ(anvil.at("HTTPSRepositoryURL"), "https://depot.example/tools/anvil.git");
    EXPECT_EQ(page.at("results").at(1).at("visibility"), "private");
}

}  // namespace
