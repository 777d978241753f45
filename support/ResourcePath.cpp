#include "support/ResourcePath.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <system_error>

namespace rkt {
namespace {

bool isOneOf(const std::filesystem::path& name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name.native()) != names.end();
}

}  // namespace

std::filesystem::path binaryPathForAddress(const void* address) {
    Dl_info information{};
    void* entry = nullptr;
    const bool found = dladdr1(address, &information, &entry, RTLD_DL_LINKMAP) != 0;
    const auto* map = static_cast<const link_map*>(entry);
    std::filesystem::path path;
    if (found && map != nullptr && map->l_name != nullptr && *map->l_name != '\0') {
        path = map->l_name;
    } else {
        // The program itself, for which the loader knows only the name that it was called by.
        path = "/proc/self/exe";
    }
    std::error_code error;
    const auto real = std::filesystem::canonical(path, error);
    return error ? std::filesystem::path() : real;
}

std::filesystem::path resourcePathForBinary(const std::filesystem::path& binary) {
    if (binary.empty()) {
        return {};
    }
    auto folder = binary.parent_path();
    if (isOneOf(folder.parent_path().filename(), {"lib", "lib64", "libexec"})) {
        folder = folder.parent_path().parent_path();
    } else if (isOneOf(folder.filename(), {"bin", "sbin", "lib", "lib32", "lib64", "libexec"})) {
        folder = folder.parent_path();
    }
    return folder / "share" / "locale";
}

}  // namespace rkt
