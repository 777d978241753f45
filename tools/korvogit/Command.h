// The subcommands. Each stands in a file of its own and adds itself to the program.

#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <stdexcept>

namespace korvogit {

/// Does what was asked for and returns the exit status.
using Action = std::function<int()>;

/// The command line was understood but cannot be obeyed; what() is a sentence for a person.
class UsageError : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

/// Each sets `chosen` when the command line chooses its subcommand.
void addServicesCommand(CLI::App& program, Action& chosen);
void addValidateCommand(CLI::App& program, Action& chosen);
void addRepositoriesCommand(CLI::App& program, Action& chosen);
void addOAuthCommand(CLI::App& program, Action& chosen);
void addLoginCommand(CLI::App& program, Action& chosen);

}  // namespace korvogit
