// Class objects live as long as the process: nobody outside may destroy one.
// Refused with: (is protected within this context|is a protected member|protected destructor)

#include "KorvoGitService/RKTService.h"

void use(const RKTServiceClass* serviceClass) {
    serviceClass->localizedNameForServiceType("GitHub");
#ifdef MISUSE
    delete serviceClass;
#endif
}
