// A file of certificate authorities that may be replaced while the process runs.

#pragma once

#include <string>

namespace rkt {

/// The path, spelled differently whenever the file has changed since the last call: by the path's
/// text libcurl keeps the authorities that it read, for a day, and the connections and TLS sessions
/// that they vouch for. Looks at the file each time. For any thread.
std::string pathOfCurrentContent(const std::string& path);

}  // namespace rkt
