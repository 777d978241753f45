#include "KorvoGitService/KorvoGitServiceErrors.h"

const char* const RKTKorvoGitServiceErrorDomain = "RKTKorvoGitServiceErrorDomain";
