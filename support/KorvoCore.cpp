#include "KorvoGitService/KorvoCore.h"

std::string KCLocalizedString(std::string_view key, const RKTBundle& bundle) {
    return bundle.localizedString(key);
}

std::string KCLocalizedStringFromTable(std::string_view key, const RKTBundle& bundle,
                                       std::string_view table) {
    return bundle.localizedString(key, table);
}
