#pragma once

#include <ostream>

#include "Server.h"

namespace emulator {

/// One line of JSON: addresses, certificate authority, accounts and applications.
void describeAsJSON(const Server& server, std::ostream& output);
/// The same as a table.
void describeForPeople(const Server& server, std::ostream& output);

}  // namespace emulator
