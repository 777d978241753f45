#include "KorvoGitService/KorvoGitServiceBase.h"

#include "KorvoGitService/KorvoCore.h"
#include "support/LibraryBundle.h"

const RKTBundle& RKTKorvoGitServiceBundle() {
    return rkt::libraryBundle();
}

std::string RKTServiceLocalizedString(std::string_view key) {
    return KCLocalizedString(key, RKTKorvoGitServiceBundle());
}

std::string RKTServiceLocalizedStringFromTable(std::string_view key, std::string_view table) {
    return KCLocalizedStringFromTable(key, RKTKorvoGitServiceBundle(), table);
}
