// The library's version.

#ifndef KORVOGITSERVICE_KORVOGITSERVICE_VERS_H
#define KORVOGITSERVICE_KORVOGITSERVICE_VERS_H

#include "KorvoGitService/RKTExport.h"

extern "C" {
/// The version as a number; a later version has a larger one.
RKT_EXPORT extern const double KorvoGitServiceVersionNumber;
/// In the form that what(1) finds in a binary, ended by a line feed.
RKT_EXPORT extern const unsigned char KorvoGitServiceVersionString[];
}

#endif
