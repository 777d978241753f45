#include <KorvoGitService/KorvoGitService.h>

extern "C" RKT_EXPORT std::size_t registeredTypes();

std::size_t registeredTypes() {
    return RKTService::classesByServiceType().size();
}
