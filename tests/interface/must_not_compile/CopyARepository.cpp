// A record is an object with identity: two of one repository would drift apart unseen.
// Refused with: (use of deleted function|deleted copy constructor|implicitly-deleted)

#include <memory>

#include "KorvoGitService/RKTServiceRepository.h"

void use() {
    const auto repository = std::make_shared<RKTServiceRepository>();
#ifdef MISUSE
    const RKTServiceRepository copy = *repository;
#endif
}
