#include <poll.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <utility>

#include "Configuration.h"
#include "Description.h"
#include "Emulator.h"

namespace {

struct Options {
    std::string configurationFile;
    std::optional<std::uint16_t> httpPort;
    std::optional<std::uint16_t> httpsPort;
    std::vector<std::string> names;
    std::optional<std::int64_t> rateLimit;
    bool strict = false;
    bool noCrossWorkspace = false;
    std::vector<std::string> accounts;
    std::vector<std::string> faults;
    std::string caFile;
    bool json = false;
    bool untilStdinCloses = false;
    bool listFaults = false;
};

void declare(Options& options, CLI::App& app) {
    app.add_option("--config", options.configurationFile,
                   "Read a JSON file first; korvogit-emulator(1) describes it");
    app.add_option("--account", options.accounts,
                   "LOGIN[:REPOSITORIES[:RESTRICTION]]: an account in the place of the usual ones");
    app.add_option("--fault", options.faults,
                   "NAME[@PATH][*TIMES]: spoil the answers at PATH, or disturb connections");
    app.add_flag("--list-faults", options.listFaults, "Print the names of the faults and end");
    app.add_option("--http-port", options.httpPort, "Port for HTTP; 0 takes a free one");
    app.add_option("--https-port", options.httpsPort, "Port for HTTPS; 0 takes a free one");
    app.add_option("--ca-file", options.caFile, "Write the CA certificate to this file too");
    app.add_option("--name", options.names, "Another host name that the certificate is valid for");
    app.add_option("--rate-limit", options.rateLimit, "Requests per hour and token")
        ->check(CLI::PositiveNumber);
    app.add_flag("--strict", options.strict,
                 "Let GitLab refuse order_by=last_activity_date, as the real one does");
    app.add_flag("--no-cross-workspace", options.noCrossWorkspace,
                 "Bitbucket Cloud answers 410 to lists across workspaces");
    app.add_flag("--json", options.json, "Print addresses, CA and accounts as one line of JSON");
    app.add_flag("--until-stdin-closes", options.untilStdinCloses,
                 "End also when the standard input ends");
}

void readFile(const std::string& name, emulator::Configuration& configuration) {
    std::ifstream file(name, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) {
        throw emulator::ConfigurationError(name + ": the file cannot be read");
    }
    try {
        emulator::readConfiguration(text, configuration);
    } catch (const emulator::ConfigurationError& error) {
        throw emulator::ConfigurationError(name + ": " + error.what());
    }
}

/// The file first, then the options, which so have the last word.
emulator::Configuration configurationOf(const Options& options) {
    emulator::Configuration configuration;
    if (!options.configurationFile.empty()) {
        readFile(options.configurationFile, configuration);
    }
    auto& server = configuration.server;
    server.httpPort = options.httpPort.value_or(server.httpPort);
    server.httpsPort = options.httpsPort.value_or(server.httpsPort);
    server.rateLimit = options.rateLimit.value_or(server.rateLimit);
    server.extraNames.insert(server.extraNames.end(), options.names.begin(), options.names.end());
    server.strict = server.strict || options.strict;
    server.listsAcrossWorkspaces = server.listsAcrossWorkspaces && !options.noCrossWorkspace;
    std::vector<emulator::Account> accounts;
    accounts.reserve(options.accounts.size());
    for (const auto& text : options.accounts) {
        accounts.push_back(emulator::parseAccount(text));
    }
    if (!accounts.empty()) {
        emulator::useAccounts(std::move(accounts), configuration);
    }
    for (const auto& text : options.faults) {
        configuration.faults.push_back(emulator::FaultOrder::parse(text));
    }
    return configuration;
}

/// Waits for SIGTERM, SIGINT or, if that is wanted, the end of the standard input.
void waitForEnd(int signals, bool untilStdinCloses) {
    pollfd watched[] = {{signals, POLLIN, 0}, {untilStdinCloses ? STDIN_FILENO : -1, POLLIN, 0}};
    while (true) {
        if (poll(watched, 2, -1) < 0 && errno != EINTR) {
            return;
        }
        char ignored[256];
        const bool inputEnded =
            watched[1].revents != 0 && read(STDIN_FILENO, ignored, sizeof ignored) <= 0;
        if (watched[0].revents != 0 || inputEnded) {
            return;
        }
    }
}

/// Signals that end the program become readable here, in whatever thread they arrive.
int endingSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC);
}

/// Each connection is a descriptor, and the usual soft limit is far below what tests open.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

void serve(const Options& options, emulator::Configuration configuration) {
    raiseDescriptorLimit();
    const int signals = endingSignals();
    emulator::Server server(std::move(configuration.server));
    for (const auto& fault : configuration.faults) {
        fault.giveTo(server);
    }
    if (!options.caFile.empty()) {
        std::filesystem::copy_file(server.caFile(), options.caFile,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    (options.json ? emulator::describeAsJSON : emulator::describeForPeople)(server, std::cout);
    waitForEnd(signals, options.untilStdinCloses);
}

int runProgram(int argc, char** argv) {
    Options options;
    CLI::App app("Answers on loopback as git hosting services do, until SIGTERM or SIGINT.");
    declare(options, app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (options.listFaults) {
        for (const auto& name : emulator::FaultOrder::names()) {
            std::cout << name << '\n';
        }
        return 0;
    }
    serve(options, configurationOf(options));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return runProgram(argc, argv);
    } catch (const emulator::ConfigurationError& error) {
        std::fprintf(stderr, "korvogit-emulator: %s\n", error.what());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korvogit-emulator: %s\n", error.what());
        return 1;
    }
}
