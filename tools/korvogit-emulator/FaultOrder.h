#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Server.h"

namespace emulator {

/// A fault as the program is asked for one: what, at which path, how many times.
struct FaultOrder {
    std::string name{};  ///< one of names()
    std::string path{};  ///< as in Match; means nothing to a disturbance of connections
    std::size_t times = Server::always;

    /// Reads "NAME[@PATH][*TIMES]". Throws ConfigurationError for an unknown name.
    static FaultOrder parse(std::string text);
    /// Throws ConfigurationError when there is no fault of that name.
    static void requireKnown(const std::string& name);
    /// The disturbances of connections, then `faults::names()`.
    static std::vector<std::string> names();

    void giveTo(Server& server) const;
};

}  // namespace emulator
