// Credentials are copied by copyWithZone(), which keeps their dynamic class.
// Refused with: (use of deleted function|deleted operator|implicitly deleted)

#include "KorvoGitService/RKTServiceCredentials.h"

void use(RKTServiceCredentials& one, const RKTServiceCredentials& other) {
    one.setUser(other.user());
#ifdef MISUSE
    one = other;
#endif
}
