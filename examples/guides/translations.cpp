// Texts of an application's own, in the language of the library's.

#include <KorvoGitService/KorvoGitService.h>

#include <clocale>
#include <iostream>

/// From the table MyApplication.mo, which lies where the program's own translations do.
static std::string nameOfDepot() {
    static const RKTBundle bundle(RKTBundle::resourcePathForAddress(&bundle), "MyApplication");
    return KCLocalizedString("Depot", bundle);
}

int main() {
    std::setlocale(LC_ALL, "");
    const auto type =
        RKTServiceCredentials::localizedNameForCredentialType(RKTServiceCredentialTypeToken);
    std::cout << type.value_or("?") << " for " << nameOfDepot() << '\n';
}
