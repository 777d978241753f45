// korvogit: tries accounts at hosting services from the command line.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <clocale>
#include <exception>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Command.h"
#include "ExitStatus.h"
#include "OAuthOptions.h"
#include "Signals.h"
#include "StandardStreams.h"

namespace korvogit {

namespace {

/// What the parser takes: the last argument first. "--name=" is split, because the parser would
/// take the following argument for the value that is empty here.
std::vector<std::string> parserArguments(int count, char** values) {
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        std::string argument = values[i];
        const bool emptyValue =
            argument.starts_with("--") && argument.find('=') == argument.size() - 1;
        if (emptyValue) argument.pop_back();
        arguments.push_back(argument);
        if (emptyValue) arguments.emplace_back();
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

bool soundsSecret(const std::string& optionName) {
    constexpr std::array<std::string_view, 3> words = {"token", "password", "secret"};
    return std::ranges::any_of(
        words, [&](std::string_view word) { return optionName.find(word) != std::string::npos; });
}

/// Arguments may be secrets that do not belong there, so only the names of options are repeated.
std::string sentenceForUnknown(const CLI::App& program, const std::vector<std::string>& arguments) {
    std::string names;
    for (const std::string& argument : arguments) {
        if (argument.size() < 2 || argument[0] != '-') continue;
        const bool isLong = argument[1] == '-';
        names += " " + argument.substr(0, isLong ? argument.find('=') : 2);
    }
    if (names.empty()) return "There is an argument that is neither an option nor a subcommand.";
    std::string sentence = "There is no such option:" + names + ".";
    if (soundsSecret(names)) {
        const bool signsIn = program.got_subcommand("oauth") || program.got_subcommand("login");
        sentence += std::string(" A secret is not taken from an argument, but from the variable ") +
                    (signsIn ? clientSecretVariable : "KORVOGIT_TOKEN or with --token-stdin") + ".";
    }
    return sentence;
}

std::string helpCommand(const CLI::App& program) {
    std::string command = program.get_name();
    for (auto chosen = program.get_subcommands(); !chosen.empty();
         chosen = chosen.front()->get_subcommands()) {
        command += " " + chosen.front()->get_name();
    }
    return command + " --help";
}

void complainAboutUsage(const CLI::App& program, const CLI::ParseError& error) {
    const auto unknown = program.remaining(true);
    std::string sentence = unknown.empty() ? error.what() : sentenceForUnknown(program, unknown);
    if (!sentence.ends_with('.')) sentence += '.';
    complain(sentence, {"Nothing was sent. See '" + helpCommand(program) + "'."});
}

int parseAndRun(int argumentCount, char** argumentValues) {
    CLI::App program(
        "Tries accounts at git hosting services: checks credentials, lists repositories.",
        "korvogit");
    Action chosen;
    program.require_subcommand(1);
    program.set_version_flag("--version", "korvogit " KORVOGIT_VERSION);
    program.footer(
        "The secret (a token or a password) comes from the variable KORVOGIT_TOKEN, or with\n"
        "--token-stdin from the first line of standard input. The client secret of an "
        "application,\n"
        "for oauth and login, comes from the variable KORVOGIT_CLIENT_SECRET.\n"
        "\n"
        "Exit status: 0 success, 1 the service or the network failed, 2 wrong usage, 130 Ctrl-C.\n"
        "\n"
        "Examples:\n"
        "  korvogit services\n"
        "  KORVOGIT_TOKEN=... korvogit validate --service GitHub --user octocat\n"
        "  KORVOGIT_TOKEN=... korvogit repositories --service GitHub --user octocat --format csv");
    addServicesCommand(program, chosen);
    addValidateCommand(program, chosen);
    addRepositoriesCommand(program, chosen);
    addOAuthCommand(program, chosen);
    addLoginCommand(program, chosen);
    try {
        program.parse(parserArguments(argumentCount, argumentValues));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            complainAboutUsage(program, error);
            return ExitWrongUsage;
        }
        std::ostringstream text;
        program.exit(error, text, text);
        writeOutput(text.str());
        return ExitSuccess;
    }
    return chosen();
}

int guardedMain(int argumentCount, char** argumentValues) {
    try {
        return parseAndRun(argumentCount, argumentValues);
    } catch (const UsageError& error) {
        complain(error.what(), {"Nothing was sent. A secret is one line of text; see 'korvogit "
                                "--help' for where it comes from."});
        return ExitWrongUsage;
    } catch (const OutputError& error) {
        if (*error.what() != '\0') {
            complain(error.what(),
                     {"The service is not the reason. Make room, or write elsewhere."});
        }
        // Ctrl-C ends whoever reads the output, too.
        if (const int signal = signalThatCame(); signal != 0) return exitStatusOfSignal(signal);
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return ExitFailure;
}

}  // namespace

}  // namespace korvogit

int main(int argumentCount, char** argumentValues) {
    korvogit::occupyStandardDescriptors();
    korvogit::installSignalHandlers();
    // The library's texts and the terminal's encoding; numbers stay as they are in every country.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
    return korvogit::guardedMain(argumentCount, argumentValues);
}
