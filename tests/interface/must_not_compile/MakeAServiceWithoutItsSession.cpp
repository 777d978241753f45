// Only make() has an Initializer, so that a service is never without its session.
// Refused with: (is protected within this context|is a protected member)

#include "KorvoGitService/RKTService.h"

class Service : public RKTService {
public:
    explicit Service(Initializer initializer) : RKTService(initializer) {}
};

std::shared_ptr<Service> use(const std::shared_ptr<const RKTServiceCredentials>& credentials) {
#ifdef MISUSE
    return std::make_shared<Service>(RKTService::Initializer());
#else
    return RKTService::make<Service>(credentials);
#endif
}
