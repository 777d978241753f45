// Uses the library for a given time as a busy application would, with faults of every kind, and
// then balances the books.

#include <KorvoGitService/RKTJSON.h>
#include <KorvoGitService/RKTMainQueue.h>
#include <poll.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Books.h"
#include "EmulatorProcess.h"
#include "Load.h"
#include "Report.h"
#include "Resources.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Options {
    int seconds = 120;
    std::size_t services = 300;
    std::size_t threads = 4;
    std::uint64_t seed = 1;
    std::optional<std::uint64_t> emulate;
};

/// Is the application's main thread until `done` says so, at most for that long.
void runMainQueue(std::chrono::milliseconds longest, const std::function<bool()>& done) {
    const auto end = Clock::now() + longest;
    while (!done() && Clock::now() < end) {
        pollfd descriptor = {RKTMainQueue::fileDescriptor(), POLLIN, 0};
        poll(&descriptor, 1, 50);
        RKTMainQueue::drain();
    }
}

bool isIdle(const soak::Books& books) {
    return books.balance().inFlight() == 0;
}

/// The library keeps connections, and looks at most once a second, when it needs another one, which
/// of them the other side has closed. So: close them, let that second go by, and use each kind of
/// service once, one after the other. What is open then is what an idle process has, once the
/// threads have ended that came while handlers kept the usual ones, after two seconds.
soak::Resources settled(const soak::EmulatorProcess& emulator) {
    emulator.calm();
    runMainQueue(1100ms, [] { return false; });
    emulator.closeIdleConnections();
    runMainQueue(1100ms, [] { return false; });
    soak::Books books;
    soak::Load load(books, soak::Load::kinds, emulator.url());
    load.useEachOnce([&] { runMainQueue(30s, [&] { return isIdle(books); }); });
    load.endServices();
    runMainQueue(30s, [&] { return load.livingServices() == 0; });
    runMainQueue(2500ms, [] { return false; });
    return soak::Resources::now();
}

/// The library keeps a few parsers, each with buffers of some fifteen times the largest text that
/// it has read. How many there are, and how large, depends on which pages were last read at the
/// same time. So all of them read at once what is longer than any page of the load.
void fillKeptParsers() {
    constexpr std::size_t moreThanAreKept = 16;
    const std::string text = "[\"" + std::string(std::size_t{384} << 10, 'x') + "\"]";
    std::vector<RKTJSONDocument> documents;
    while (documents.size() < moreThanAreKept) {
        auto document = RKTJSONSerialization::JSONObjectWithData(text);
        if (!document) throw std::runtime_error("a text for the parsers cannot be read");
        documents.push_back(*std::move(document));
    }
}

/// What is in use with nothing under way: under load it is the bodies and pages of just then.
std::size_t memoryAtRest(soak::Load& load, const soak::Books& books) {
    load.stop();
    runMainQueue(30s, [&] { return isIdle(books); });
    fillKeptParsers();
    return soak::memoryInUse();
}

void loadFor(const Options& options, soak::Load& load, const soak::Books& books,
             const soak::EmulatorProcess& emulator, std::vector<std::size_t>& memory) {
    const auto begin = Clock::now();
    for (int second = 0; second < options.seconds; ++second) {
        load.start(options.threads, options.seed + static_cast<std::uint64_t>(second));
        const auto next = begin + std::chrono::seconds(second + 1);
        runMainQueue(24h, [&] { return Clock::now() >= next; });
        emulator.disturbConnections();
        if ((second + 1) % soak::Report::secondsPerSample == 0)
            memory.push_back(memoryAtRest(load, books));
    }
    load.stop();
}

soak::Report soakFor(const Options& options) {
    const soak::EmulatorProcess emulator(options.seed);
    RKTNetworkSettings::setShared(emulator.settings());
    soak::Report report;
    report.before = settled(emulator);
    // Handlers that never ran may hold on to them, so they outlive the load in any case.
    static soak::Books books;
    soak::Load load(books, options.services, emulator.url());
    emulator.storm();
    loadFor(options, load, books, emulator, report.memory);
    report.residentMemory = soak::residentMemory();
    load.endServices();
    runMainQueue(60s, [&] { return isIdle(books) && load.livingServices() == 0; });
    report.balance = books.balance();
    report.servicesMade = load.servicesMade();
    report.servicesLeft = load.livingServices();
    // Of several closed connections to a host the library may find one at a time.
    for (int round = 0; round < 5 && report.after != report.before; ++round) {
        report.after = settled(emulator);
    }
    return report;
}

int run(int argc, char** argv) {
    Options options;
    CLI::App app("Uses the library for a time, with faults of every kind, and balances the books.");
    app.add_option("--seconds", options.seconds, "How long")->check(CLI::PositiveNumber);
    app.add_option("--services", options.services, "How many services at a time")
        ->check(CLI::PositiveNumber);
    app.add_option("--seed", options.seed, "What the random choices begin with");
    app.add_option("--emulate", options.emulate)->group("");  // the program's own, for its child
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (options.emulate) return soak::runEmulator(*options.emulate);
    const auto report = soakFor(options);
    report.print(std::cout);
    return report.isInOrder() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korvogit-soak: %s\n", error.what());
        return 2;
    }
}
