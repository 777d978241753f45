#include "tests/helpers/Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "Client.h"
#include "tools/korvogit-emulator/Server.h"

namespace {

using emulator_test::Client;
using emulator_test::get;
using emulator_test::Tls;
using testing::HasSubstr;

Launch launch(std::vector<std::string> arguments) {
    return {.program = KORVOGIT_EMULATOR_PROGRAM, .arguments = std::move(arguments)};
}

/// Two ports that were free a moment ago.
struct FreePorts {
    FreePorts() {
        const emulator::Server server;
        http = server.httpPort();
        https = server.httpsPort();
    }
    std::uint16_t http = 0;
    std::uint16_t https = 0;
};

TEST(EmulatorProgram, PrintsOneLineOfJsonAndEndsWithItsInput) {
    const auto ended = run(launch({"--json", "--until-stdin-closes"}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.error, "");
    ASSERT_EQ(std::ranges::count(ended.output, '\n'), 1);
    const auto json = nlohmann::json::parse(ended.output);
    EXPECT_EQ(json["https"], "https://localhost:" + std::to_string(json["httpsPort"].get<int>()));
    EXPECT_EQ(json["http"], "http://localhost:" + std::to_string(json["httpPort"].get<int>()));
    EXPECT_EQ(json["accounts"][0]["login"], "octavia");
    EXPECT_EQ(json["accounts"][0]["token"], "demo-token-octavia");
    EXPECT_EQ(json["accounts"][0]["repositories"], 137);
    EXPECT_THAT(json["hosts"], testing::Contains("api.bitbucket.org"));
    EXPECT_THAT(json["ca"].get<std::string>(), testing::StartsWith("-----BEGIN CERTIFICATE-----"));
    EXPECT_FALSE(std::filesystem::exists(json["caFile"].get<std::string>()));
}

TEST(EmulatorProgram, HasTheAccountsOfItsOptions) {
    const auto ended = run(launch({"--json", "--until-stdin-closes", "--account", "jo:30",
                                   "--account", "kim:2:rate-limited"}));
    ASSERT_EQ(ended.status, 0) << ended.error;
    const auto accounts = nlohmann::json::parse(ended.output)["accounts"];
    ASSERT_EQ(accounts.size(), 2U);
    EXPECT_EQ(accounts[0]["login"], "jo");
    EXPECT_EQ(accounts[0]["repositories"], 30);
    EXPECT_EQ(accounts[0]["restriction"], "none");
    EXPECT_EQ(accounts[1]["token"], "demo-token-kim");
    EXPECT_EQ(accounts[1]["restriction"], "rate-limited");
}

/// A configuration file for as long as the object lives.
class ConfigurationFile {
public:
    explicit ConfigurationFile(const std::string& text) {
        const FreePorts ports;
        path_ = std::filesystem::temp_directory_path() /
                ("emulator-configuration-" + std::to_string(ports.https) + ".json");
        std::ofstream(path_) << text;
    }
    ~ConfigurationFile() { std::filesystem::remove(path_); }
    ConfigurationFile(const ConfigurationFile&) = delete;
    ConfigurationFile& operator=(const ConfigurationFile&) = delete;
    std::string path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

TEST(EmulatorProgram, ReadsAFileAndLetsOptionsHaveTheLastWord) {
    const ConfigurationFile file(R"({"accounts": [{"login": "a-login-of-twenty-letters"}],
                                     "applications": [{"clientId": "i", "clientSecret": "s"}]})");
    const auto ended = run(launch({"--until-stdin-closes", "--config", file.path()}));
    ASSERT_EQ(ended.status, 0) << ended.error;
    EXPECT_THAT(ended.output, HasSubstr("a-login-of-twenty-letters  demo-token-a-login"));
    EXPECT_THAT(ended.output, testing::Not(HasSubstr("octavia")));
    const auto other =
        run(launch({"--until-stdin-closes", "--json", "--config", file.path(), "--account", "jo"}));
    const auto json = nlohmann::json::parse(other.output);
    EXPECT_EQ(json["accounts"].size(), 1U);
    EXPECT_EQ(json["accounts"][0]["login"], "jo");
    EXPECT_EQ(json["applications"][0]["clientId"], "i");
}

TEST(EmulatorProgram, NamesTheFileThatIsWrong) {
    const ConfigurationFile file(R"({"accounts": [{"login": "jo", "size": 3}]})");
    const auto ended = run(launch({"--config", file.path()}));
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.error, "korvogit-emulator: " + file.path() +
                               ": accounts[0].size: there is no such member, but login, "
                               "password, repositories, restriction, token\n");
    EXPECT_EQ(run(launch({"--config", "/no/such/file"})).status, 2);
}

class EmulatorProgramEndedBy : public testing::TestWithParam<int> {};

TEST_P(EmulatorProgramEndedBy, ServesUntilTheSignal) {
    const FreePorts ports;
    const auto caFile = std::filesystem::temp_directory_path() /
                        ("emulator-program-" + std::to_string(ports.https) + ".pem");
    auto launched = launch({"--http-port", std::to_string(ports.http), "--https-port",
                            std::to_string(ports.https), "--ca-file", caFile.string(), "--name",
                            "extra.example.net", "--fault", "close-after-request@/api/v3/*1",
                            "--fault", "tls-reset*1"});
    launched.terminalColumns = 200;
    Program program(launched);
    program.waitUntilShown("demo-secret-expiring");

    const std::string request = get("/api/v3/", "User-Agent: t\r\n");
    Client spoilt(ports.http);
    spoilt.send(request);
    EXPECT_EQ(spoilt.receiveAll().bytes, "");
    EXPECT_FALSE(Client(ports.https, Tls{caFile}).isSecure());
    Client client(ports.https, Tls{caFile, "extra.example.net"});
    client.send(request);
    EXPECT_EQ(client.receive().status, 401U);

    program.signal(GetParam());
    const auto ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, HasSubstr("https://localhost:" + std::to_string(ports.https)));
    EXPECT_THAT(ended.output, HasSubstr("demo-token-octavia  137 repositories"));
    std::filesystem::remove(caFile);
}

INSTANTIATE_TEST_SUITE_P(Signals, EmulatorProgramEndedBy, testing::Values(SIGTERM, SIGINT));

TEST(EmulatorProgram, ListsTheFaultsItKnows) {
    const auto ended = run(launch({"--list-faults"}));
    EXPECT_EQ(ended.status, 0);
    for (const auto& name : emulator::faults::names()) {
        EXPECT_THAT(ended.output, HasSubstr(name + "\n"));
    }
    EXPECT_THAT(ended.output, HasSubstr("tls-reset\n"));
}

TEST(EmulatorProgram, RefusesAFaultThatItDoesNotKnow) {
    const auto ended = run(launch({"--fault", "earthquake@/user"}));
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.error, HasSubstr("there is no fault \"earthquake\""));
}

TEST(EmulatorProgram, RefusesAnOptionThatItDoesNotKnow) {
    EXPECT_EQ(run(launch({"--no-such-option"})).status, 2);
}

TEST(EmulatorProgram, SaysThatItsPortIsTaken) {
    const emulator::Server server;
    const auto ended = run(launch({"--http-port", std::to_string(server.httpPort())}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.error, HasSubstr("in use"));
}

}  // namespace
