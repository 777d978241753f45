#include "EmulatorProcess.h"

#include <Emulator.h>
#include <Wire.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <iostream>
#include <mutex>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace soak {

namespace {

using emulator::Answer;
using emulator::ConnectionStage;
using emulator::Fault;
using emulator::RawAnswer;
using emulator::Request;

class Dice {
public:
    explicit Dice(std::uint64_t seed) : random_(seed) {}
    std::size_t below(std::size_t limit) {
        const std::lock_guard lock(mutex_);
        return random_() % limit;
    }

private:
    std::mutex mutex_;
    std::mt19937_64 random_;
};

/// The faults by name but for those that take seconds, which have shorter ones in their place, and
/// some below HTTP.
std::vector<Fault> faultsToUse() {
    namespace faults = emulator::faults;
    using std::chrono::milliseconds;
    std::vector<Fault> result = {
        faults::delayBeforeHeaders(milliseconds(20)),
        faults::delayInBody(milliseconds(20)),
        faults::gzipBombBody(16),
        faults::manyHeaders(5000),
        [](const Request&, const Answer&) { return RawAnswer().send("\x16\x03\x03 \xff").reset(); },
        [](const Request& request, const Answer& answer) {
            return RawAnswer().send(emulator::headBytes(answer, request)).cutOff();
        },
        [](const Request&, const Answer&) {
            return RawAnswer().send("HTTP/1.1 200 OK\r\n folded: first\r\nA: b\r\n\r\n[]").close();
        },
    };
    for (const auto& name : faults::names()) {
        const bool isSlow = name.starts_with("delay-") || name == "gzip-bomb" ||
                            name == "endless-headers" || name == "endless-interim" ||
                            name == "many-headers";
        if (!isSlow) result.push_back(*faults::named(name));
    }
    return result;
}

/// A token answer as GitHub (a form) or Bitbucket (JSON) gives it; or a refusal.
Answer tokenAnswer(const Request& request, Dice& dice) {
    const auto token = "token-" + std::to_string(dice.below(1000));
    if (request.path.starts_with("/site/")) {
        return dice.below(2) == 0
                   ? emulator::jsonAnswer(200, R"({"access_token":")" + token +
                                                   R"(","expires_in":7200,"refresh_token":"r"})")
                   : emulator::jsonAnswer(400, R"({"error":"invalid_request"})");
    }
    auto answer = emulator::textAnswer(
        200, dice.below(2) == 0 ? "access_token=" + token : "error=bad_verification_code");
    answer.headers.set("Content-Type", "application/x-www-form-urlencoded");
    return answer;
}

void beginStorm(emulator::Server& server, Dice& dice) {
    server.fault({}, [&dice, faults = faultsToUse()](const Request& request, const Answer& answer) {
        return dice.below(3) == 0 ? faults[dice.below(faults.size())](request, answer)
                                  : emulator::wireAnswer(answer, request);
    });
    server.script({.path = "/login/oauth/access_token"},
                  [&dice](const Request& request) { return tokenAnswer(request, dice); });
    server.script({.path = "/site/oauth2/access_token"},
                  [&dice](const Request& request) { return tokenAnswer(request, dice); });
}

void disturbConnections(emulator::Server& server) {
    server.disturb(ConnectionStage::Accepted, RawAnswer().reset(), 2);
    server.disturb(ConnectionStage::ClientHello, RawAnswer().reset(), 2);
    server.disturb(ConnectionStage::ClientHello, RawAnswer().silence(), 1);
    server.disturb(ConnectionStage::ClientHello, RawAnswer().send("no TLS here\r\n"), 2);
}

RKTNetworkSettings settingsFor(std::uint16_t httpsPort, const std::string& caFile) {
    RKTNetworkSettings settings;
    settings.certificateAuthorityFile = caFile;
    for (const char* host :
         {"api.github.com", "github.com", "gitlab.com", "api.bitbucket.org", "bitbucket.org"}) {
        settings.hostMappings.push_back({host, 443, "127.0.0.1", httpsPort});
    }
    // Silent answers are among the faults.
    settings.timeoutIntervalForRequest = std::chrono::seconds(1);
    settings.maximumBodySize = std::size_t{8} << 20;
    return settings;
}

struct Pipe {
    Pipe() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    }
    std::array<int, 2> ends{};
};

}  // namespace

EmulatorProcess::EmulatorProcess(std::uint64_t seed) {
    const Pipe input;
    const Pipe output;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.ends[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.ends[1], STDOUT_FILENO);
    std::string seedText = std::to_string(seed);
    std::string name = "korvogit-soak";
    std::string option = "--emulate";
    char* const arguments[] = {name.data(), option.data(), seedText.data(), nullptr};
    const int failed =
        posix_spawn(&process_, "/proc/self/exe", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(input.ends[0]);
    close(output.ends[1]);
    toProcess_ = input.ends[1];
    fromProcess_ = output.ends[0];
    if (failed != 0) throw std::runtime_error("the emulator does not start");

    std::istringstream line(readLine());
    std::uint16_t port = 0;
    std::string caFile;
    line >> port >> caFile;
    settings_ = settingsFor(port, caFile);
    url_ = "https://localhost:" + std::to_string(port);
}

EmulatorProcess::~EmulatorProcess() {
    close(toProcess_);
    close(fromProcess_);
    waitpid(process_, nullptr, 0);
}

std::string EmulatorProcess::readLine() const {
    std::string line;
    for (char byte = 0; byte != '\n'; line += byte) {
        if (read(fromProcess_, &byte, 1) != 1) throw std::runtime_error("the emulator has ended");
    }
    return line;
}

void EmulatorProcess::tell(const std::string& command) const {
    const auto written = write(toProcess_, command.data(), command.size());
    if (written != static_cast<ssize_t>(command.size()) || readLine() != command) {
        throw std::runtime_error("the emulator has ended");
    }
}

int runEmulator(std::uint64_t seed) {
    Dice dice(seed);
    emulator::ServerOptions options;
    options.rateLimit = std::int64_t{1} << 60;
    options.recordedRequests = 1;
    emulator::Server server(options);
    std::cout << server.httpsPort() << ' ' << server.caFile().string() << std::endl;
    for (std::string command; std::getline(std::cin, command);) {
        if (command == "storm") beginStorm(server, dice);
        if (command == "calm") server.clearScripts();
        if (command == "disturb") disturbConnections(server);
        if (command == "close") server.closeIdleConnections();
        std::cout << command << std::endl;
    }
    return 0;
}

}  // namespace soak
