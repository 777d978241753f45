#include "support/curl/AuthorityFile.h"

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

namespace rkt {
namespace {

/// Of a file's content: where it is, how much, and when it was written and put there.
using Identity = std::array<std::int64_t, 7>;

std::optional<Identity> identityOf(const std::string& path) {
    struct stat status{};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return Identity{static_cast<std::int64_t>(status.st_dev),
                    static_cast<std::int64_t>(status.st_ino),
                    status.st_size,
                    status.st_mtim.tv_sec,
                    status.st_mtim.tv_nsec,
                    status.st_ctim.tv_sec,
                    status.st_ctim.tv_nsec};
}

/// The number of the last change of the file at a path, among those of all files: no two share one,
/// so no two paths share a spelling. 0 before the first.
std::uint32_t lastChangeOf(const std::string& path) {
    struct Seen {
        std::optional<Identity> identity;
        std::uint32_t change = 0;
    };
    static auto& mutex = *new std::mutex;
    static auto& files = *new std::map<std::string, Seen>;
    static std::uint32_t changes = 0;
    const auto identity = identityOf(path);
    const std::lock_guard lock(mutex);
    auto& seen = files.try_emplace(path, Seen{identity}).first->second;
    if (seen.identity != identity) seen = {identity, ++changes};
    return seen.change;
}

/// As so many components that lead nowhere.
std::string spelled(std::uint32_t number) {
    std::string components;
    for (int bit = 31; bit >= 0; --bit) components += (number >> bit & 1) != 0 ? ".//" : "./";
    return components;
}

}  // namespace

std::string pathOfCurrentContent(const std::string& path) {
    const auto change = lastChangeOf(path);
    if (change == 0) return path;
    return std::string(path).insert(path.starts_with('/') ? 1 : 0, spelled(change));
}

}  // namespace rkt
