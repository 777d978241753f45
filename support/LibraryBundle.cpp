#include "support/LibraryBundle.h"

namespace rkt {

const RKTBundle& libraryBundle() {
    static const char insideTheLibrary = 0;
    static const auto& bundle =
        *new RKTBundle(RKTBundle::resourcePathForAddress(&insideTheLibrary), "KorvoGitService");
    return bundle;
}

std::string localized(std::string_view key) {
    return libraryBundle().localizedString(key);
}

}  // namespace rkt
