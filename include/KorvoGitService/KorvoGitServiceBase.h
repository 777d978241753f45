// The library's own texts.

#ifndef KORVOGITSERVICE_KORVOGITSERVICEBASE_H
#define KORVOGITSERVICE_KORVOGITSERVICEBASE_H

#include <string>
#include <string_view>

#include "KorvoGitService/RKTBundle.h"
#include "KorvoGitService/RKTExport.h"

/// The bundle of the binary that holds this library; always the same object. The shared library has
/// its translations beside itself, wherever it was moved. The static library looks in share/locale
/// beside the folder of the program it was linked into, where the application installs a copy.
RKT_EXPORT const RKTBundle& RKTKorvoGitServiceBundle();

/// Every text that the library shows to a person goes through this, except what a service says. The
/// English text is the key, and the result where the language, or this text in it, is missing. The
/// application must have called setlocale(): see RKTBundle::localizedString().
RKT_EXPORT std::string RKTServiceLocalizedString(std::string_view key);

/// The same from a table of the application's own in the library's bundle.
RKT_EXPORT std::string RKTServiceLocalizedStringFromTable(std::string_view key,
                                                          std::string_view table);

#endif
