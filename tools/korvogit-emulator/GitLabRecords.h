#pragma once

#include <string>

#include "Accounts.h"

namespace emulator {

/// The signed-in user's record as JSON text. `web` is the server's address, "https://HOST".
std::string gitLabUserRecord(const std::string& web, const Account& account);
/// How much a project's record says; `Simple` is what the parameter "simple" asks for.
enum class ProjectDetail { Full, Simple };
/// A project's record as JSON text. `host` is the server's name without port, for ssh addresses.
std::string gitLabProjectRecord(const std::string& web, const std::string& host,
                                const Repository& repository,
                                ProjectDetail detail = ProjectDetail::Full);

}  // namespace emulator
