// Uses the installed library: its registry, its exceptions, its strings tables. With the name of a
// table, prints instead texts in the locale's language: the library's, then one from that table.

#include <KorvoGitService/KorvoGitService.h>

#include <clocale>
#include <cstdio>
#include <string>

namespace {

void printTexts(const char* table) {
    std::setlocale(LC_MESSAGES, "");
    for (const std::string& text :
         {RKTServiceCredentials::localizedNameForCredentialType(RKTServiceCredentialTypeToken)
              .value_or("(no name)"),
          RKTHTTPURLResponse::localizedStringForStatusCode(404),
          RKTError("Domain", 7).localizedDescription(),
          RKTServiceLocalizedStringFromTable("Depot", table)}) {
        std::printf("%s\n", text.c_str());
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount > 1) {
        printTexts(arguments[1]);
        return 0;
    }
    for (const auto& [serviceType, serviceClass] : RKTService::classesByServiceType()) {
        const auto name = serviceClass->localizedNameForServiceType(serviceType);
        std::printf("%s: %s\n", serviceType.c_str(), name.value_or("(no name)").c_str());
    }
    std::printf("%s\n", RKTKorvoGitServiceBundle().resourcePath().c_str());
    try {
        const RKTServiceCredentials credentials;
    } catch (const RKTInvalidArgumentException& exception) {
        std::printf("%s\n", exception.what());
    }
    return RKTService::classesByServiceType().size() == 8 ? 0 : 1;
}
