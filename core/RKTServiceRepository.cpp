#include "KorvoGitService/RKTServiceRepository.h"

const char* const RKTServiceRepositoryStateOpen = "open";
const char* const RKTServiceRepositoryStateClosed = "closed";

const char* const RKTServiceRepositoryVisibilityPublic = "public";
const char* const RKTServiceRepositoryVisibilityPrivate = "private";
const char* const RKTServiceRepositoryVisibilityInternal = "internal";
