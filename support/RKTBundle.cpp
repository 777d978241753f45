#include "KorvoGitService/RKTBundle.h"

#include <libintl.h>

#include <mutex>
#include <utility>

#include "support/ResourcePath.h"

namespace {

/// The C library knows one folder per table name and process, but two bundles may each have a table
/// of one name, and the application may bind one itself. So a table is bound anew for each look-up,
/// which changes nothing and costs little while the folder is the same.
std::string translate(const std::string& key, const std::string& table,
                      const std::string& resourcePath) {
    static constinit std::mutex mutex;
    const std::lock_guard lock(mutex);
    bindtextdomain(table.c_str(), resourcePath.c_str());
    bind_textdomain_codeset(table.c_str(), "UTF-8");
    return dgettext(table.c_str(), key.c_str());
}

}  // namespace

RKTBundle::RKTBundle(std::string resourcePath, std::string defaultTable)
    : resourcePath_(std::move(resourcePath)), defaultTable_(std::move(defaultTable)) {}

std::string RKTBundle::resourcePathForAddress(const void* address) {
    return rkt::resourcePathForBinary(rkt::binaryPathForAddress(address)).string();
}

std::string RKTBundle::localizedString(std::string_view key, std::string_view table) const {
    // A catalogue keeps its own header under the empty key, and its keys end at a NUL.
    if (resourcePath_.empty() || key.empty() || key.find('\0') != std::string_view::npos) {
        return std::string(key);
    }
    return translate(std::string(key), table.empty() ? defaultTable_ : std::string(table),
                     resourcePath_);
}
