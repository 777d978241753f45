// Options that several subcommands have.

#pragma once

#include <KorvoGitService/RKTURL.h>

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace korvogit {

/// Adds "--service", which must name a registered service type.
CLI::Option* addServiceOption(CLI::App& command, std::string& serviceType);

/// The service's name for a person.
std::string serviceName(const std::string& serviceType);

/// Adds an option whose value may be the empty text, which the parser would read as none.
CLI::Option* addTextOption(CLI::App& command, const std::string& names,
                           std::optional<std::string>& value, const std::string& description);

/// Adds an option for a URL, which is not repeated when it is none: it may hold a secret.
CLI::Option* addURLOption(CLI::App& command, const std::string& names, std::optional<RKTURL>& value,
                          const std::string& description);

}  // namespace korvogit
