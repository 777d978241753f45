// Where a binary's resources lie.

#ifndef KORVOGITSERVICE_SUPPORT_RESOURCEPATH_H
#define KORVOGITSERVICE_SUPPORT_RESOURCEPATH_H

#include <filesystem>

namespace rkt {

/// The file that `address` was loaded from, without symbolic links. Empty if the system does not
/// tell.
std::filesystem::path binaryPathForAddress(const void* address);

/// The folder `share/locale` that goes with a program or library: under PREFIX for a binary in
/// PREFIX/bin, PREFIX/lib or PREFIX/lib/ARCHITECTURE (the GNU and Debian layouts), and otherwise
/// beside the binary.
std::filesystem::path resourcePathForBinary(const std::filesystem::path& binary);

}  // namespace rkt

#endif
