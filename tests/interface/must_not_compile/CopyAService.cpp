// A service owns a session; a second owner would end it twice.
// Refused with: (use of deleted function|deleted copy constructor|implicitly-deleted)

#include "KorvoGitService/RKTService.h"

class Service : public RKTService {
public:
    explicit Service(Initializer initializer) : RKTService(initializer) {}
};

void use(const Service& service) {
    service.credentials();
#ifdef MISUSE
    Service copy = service;
#endif
}
