// The completions of bash and zsh against the program that they complete.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Korvogit.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

using Names = std::set<std::string>;

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) all.push_back(line);
    return all;
}

Names words(const std::string& text, const std::string& separators) {
    const std::regex pattern("[^" + separators + "]+");
    return {std::sregex_token_iterator(text.begin(), text.end(), pattern), {}};
}

std::string join(const Arguments& arguments) {
    std::string text;
    for (const auto& argument : arguments) text += " " + argument;
    return text;
}

/// What a command's help lists.
struct Help {
    Names options{};  ///< the long name of each, without the other spellings of the same
    Names subcommands{};
};

Help helpOf(const Arguments& command) {
    static const std::regex option("  (?:-\\w,)?(--[\\w-]+).*");
    static const std::regex subcommand("  (\\w[\\w-]*) .*");
    Help help;
    bool amongSubcommands = false;
    for (const auto& line : lines(run(commandLine(command + Arguments{"--help"})).output)) {
        std::smatch match;
        if (!line.starts_with(' ')) amongSubcommands = line == "Subcommands:";
        if (std::regex_match(line, match, option)) help.options.insert(match[1]);
        if (amongSubcommands && std::regex_match(line, match, subcommand)) {
            help.subcommands.insert(match[1]);
        }
    }
    return help;
}

/// All commands that the help leads to; the first is the program without a subcommand.
std::vector<Arguments> allCommands() {
    std::vector<Arguments> commands = {{}};
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const Arguments command = commands[i];
        for (const auto& name : helpOf(command).subcommands) {
            commands.push_back(command + Arguments{name});
        }
    }
    return commands;
}

std::string sourceOf(const std::string& completion) {
    return TEST_DATA_DIR "/../../tools/korvogit/completions/" + completion;
}

std::string outputOf(const std::string& shell, const Arguments& arguments) {
    const Ended ended = run({.program = shell, .arguments = arguments});
    EXPECT_EQ(ended.status, 0) << ended.error;
    EXPECT_EQ(ended.error, "");
    return ended.output;
}

/// What bash offers for the last of these words.
Names offeredByBash(const Arguments& typed) {
    const std::string script =
        "source \"$0\"; COMP_WORDS=(korvogit \"$@\"); COMP_CWORD=$#; _korvogit; "
        "printf '%s\\n' \"${COMPREPLY[@]}\"";
    const std::string offered =
        outputOf("/bin/bash", Arguments{"-c", script, sourceOf("korvogit.bash")} + typed);
    return words(offered, "\n");
}

/// How zsh describes what may stand at the last of these words. An option, then its values.
std::vector<std::string> describedByZsh(const Arguments& typed) {
    const std::string script =
        "words=(korvogit \"$@\"); CURRENT=$#words; _arguments() { print -rl -- \"$@\" }; "
        "source \"$0\"";
    return lines(
        outputOf("/bin/zsh", Arguments{"-f", "-c", script, sourceOf("_korvogit")} + typed));
}

Names optionsOfZsh(const Arguments& command) {
    static const std::regex option("(?:\\(.*?\\))?\\*?(--[\\w-]+)[=\\[].*");
    Names options;
    for (const auto& line : describedByZsh(command + Arguments{""})) {
        std::smatch match;
        if (std::regex_match(line, match, option)) options.insert(match[1]);
    }
    return options;
}

/// The words in parentheses at the end of a description that begins so.
Names listedByZsh(const Arguments& command, const std::string& beginning) {
    for (const auto& line : describedByZsh(command + Arguments{""})) {
        if (line.starts_with(beginning) && line.ends_with(')')) {
            return words(line.substr(line.rfind('(')), " ()");
        }
    }
    return {};
}

Names offeredValues(const Arguments& command, const std::string& option) {
    const Names byBash = offeredByBash(command + Arguments{option, ""});
    EXPECT_EQ(listedByZsh(command, option + "=["), byBash) << join(command) << " " << option;
    return byBash;
}

/// What the program names in its refusal of another value.
Names acceptedValues(const Arguments& command, const std::string& option) {
    const std::string refusal = run(commandLine(command + Arguments{option, "?"})).error;
    const std::string sentence = std::regex_replace(
        refusal.substr(0, refusal.find('\n')), std::regex(".*(must be one of|must be|are) "), "");
    Names names = words(sentence, " ,|.");
    names.erase("or");
    return names;
}

TEST(KorvogitCompletion, BashOffersTheOptionsAndSubcommandsOfTheHelp) {
    for (const auto& command : allCommands()) {
        const Help help = helpOf(command);
        EXPECT_FALSE(help.options.empty()) << join(command);
        EXPECT_EQ(offeredByBash(command + Arguments{"--"}), help.options) << join(command);
        Names everything = help.options;
        everything.insert(help.subcommands.begin(), help.subcommands.end());
        EXPECT_EQ(offeredByBash(command + Arguments{""}), everything) << join(command);
    }
}

TEST(KorvogitCompletion, ZshOffersTheOptionsAndSubcommandsOfTheHelp) {
    for (const auto& command : allCommands()) {
        const Help help = helpOf(command);
        EXPECT_EQ(optionsOfZsh(command), help.options) << join(command);
        EXPECT_EQ(listedByZsh(command, "1:"), help.subcommands) << join(command);
    }
}

TEST(KorvogitCompletion, OffersTheValuesThatTheProgramAccepts) {
    const Arguments repositories = {"repositories", "--service", "GitHub"};
    for (const char* option : {"--sort", "--direction"}) {
        Names accepted = acceptedValues(repositories, option);
        EXPECT_THAT(accepted, IsSupersetOf({"a", "number", "default"})) << option;
        accepted.erase("a");
        accepted.erase("number");
        EXPECT_EQ(offeredValues({"repositories"}, option), accepted);
    }
    for (const char* option : {"--columns", "--sort-by"}) {
        EXPECT_EQ(offeredValues({"repositories"}, option), acceptedValues(repositories, option));
    }
    EXPECT_EQ(offeredValues({"validate"}, "--credential-type"),
              acceptedValues({"validate", "--service", "GitHub"}, "--credential-type"));
    EXPECT_EQ(offeredValues({"login"}, "--service"), acceptedValues({"login"}, "--service"));
    for (const auto& command : allCommands()) {
        if (!helpOf(command).options.contains("--format")) continue;
        const Names formats = acceptedValues(command, "--format");
        EXPECT_THAT(formats, IsSupersetOf({"table", "json"}));
        EXPECT_EQ(offeredValues(command, "--format"), formats) << join(command);
    }
}

TEST(KorvogitCompletion, BashCompletesWhatWasBegun) {
    EXPECT_THAT(offeredByBash({"re"}), ElementsAre("repositories"));
    EXPECT_THAT(offeredByBash({"repositories", "--s"}),
                ElementsAre("--service", "--sort", "--sort-by", "--state"));
    EXPECT_THAT(offeredByBash({"login", "--service", "GitL"}),
                ElementsAre("GitLab", "GitLabSelfHosted"));
}

TEST(KorvogitCompletion, BashCompletesAValueAfterAnEqualsSign) {
    EXPECT_THAT(offeredByBash({"repositories", "--format", "="}),
                ElementsAre("csv", "json", "jsonl", "table"));
    EXPECT_THAT(offeredByBash({"repositories", "--format", "=", "c"}), ElementsAre("csv"));
}

TEST(KorvogitCompletion, BashOffersNoOptionWhereATextIsExpected) {
    for (const auto& command : allCommands()) {
        const Names options = helpOf(command).options;
        for (const std::string option : {"--user", "--url", "--client-id", "--timeout", "--code"}) {
            if (!options.contains(option)) continue;
            EXPECT_THAT(offeredByBash(command + Arguments{option, ""}), IsEmpty())
                << join(command) << " " << option;
        }
    }
}

TEST(KorvogitCompletion, BashOffersFilesForTheAuthorities) {
    EXPECT_THAT(offeredByBash({"validate", "--cacert", sourceOf("korv")}),
                ElementsAre(sourceOf("korvogit.bash")));
}

}  // namespace
