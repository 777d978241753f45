#include "KorvoGitService/KorvoGitService_vers.h"

const double KorvoGitServiceVersionNumber = 1.0;
const unsigned char KorvoGitServiceVersionString[] =
    "@(#)PROGRAM:KorvoGitService  PROJECT:KorvoGit-1\n";
