#pragma once

#include <KorvoGitService/RKTError.h>

#include <string>

namespace korvogit {

/// Tells a person on standard error what went wrong, in one sentence; under it what the service
/// suggests or, for a failed transfer, the address; and what it is not and what to do next.
void report(const RKTError& error, const std::string& serviceName);

/// For an answer that the library takes, but that lacks what a person asked for.
RKTError errorForUselessAnswer(const std::string& sentence);

}  // namespace korvogit
