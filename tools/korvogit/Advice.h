#pragma once

#include <KorvoGitService/RKTError.h>

#include <string>

namespace korvogit {

/// For whoever met an error: what is not the reason, so that nobody looks there, and what to do
/// next. Empty for an error of an unknown domain.
std::string adviceFor(const RKTError& error);

}  // namespace korvogit
