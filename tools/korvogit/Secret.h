// Where secrets come from: the environment or standard input, never an argument, which every user
// of the machine could read in the list of processes.

#pragma once

#include <optional>
#include <string>

namespace korvogit {

// What the secret is called in a sentence is `noun`, such as "token".

/// The variable's value; nothing when it is not set.
/// @throws UsageError when the value cannot be a secret: it has a line end inside
std::optional<std::string> secretFromEnvironment(const char* variable, const std::string& noun);

/// The first line of standard input without its LF or CRLF. At a terminal the person is asked for
/// it, and what is typed is not shown.
/// @throws UsageError when there is no line, it is overlong, or it has a CR or NUL inside
std::string secretFromStandardInput(const std::string& noun);

}  // namespace korvogit
