// The place of a library's resources.

#ifndef KORVOGITSERVICE_RKTBUNDLE_H
#define KORVOGITSERVICE_RKTBUNDLE_H

#include <memory>
#include <string>
#include <string_view>

#include "KorvoGitService/RKTExport.h"

/// A folder with strings tables: gettext catalogues `LANGUAGE/LC_MESSAGES/TABLE.mo`. Identity
/// counts: two bundles of one folder are two objects. All operations are safe from any thread.
class RKT_EXPORT RKTBundle {
public:
    /// @param resourcePath  the folder that holds the languages' folders; it need not exist, and
    ///                      with an empty one there are no translations
    /// @param defaultTable  the table that is used when none is named
    RKTBundle(std::string resourcePath, std::string defaultTable);
    RKTBundle(const RKTBundle&) = delete;
    RKTBundle& operator=(const RKTBundle&) = delete;

    /// The folder `share/locale` that belongs to the binary in which `address` lies: beside the
    /// folder that holds an installed library, or in the build tree. This is how a library that was
    /// moved finds its texts.
    static std::string resourcePathForAddress(const void* address);

    /// As it was given; empty when there is no such folder to look in.
    const std::string& resourcePath() const { return resourcePath_; }

    /// `localizedStringForKey:value:table:`. The text in UTF-8 for the locale's language, or the
    /// key itself when there is no translation. An empty table means the default one.
    ///
    /// The locale is the application's to set: setlocale(LC_MESSAGES, "") or setlocale(LC_ALL, "")
    /// before it starts threads takes it from LC_ALL, LC_MESSAGES or LANG. Without that, and in the
    /// locale "C", there are no translations. In any other, a list of languages in the environment
    /// variable LANGUAGE, such as "pt_BR:es", comes before the locale's own (GNU gettext manual,
    /// "The LANGUAGE variable"). A thread's own locale (uselocale) counts for what that thread asks
    /// for, but errors get their texts on the library's threads.
    std::string localizedString(std::string_view key, std::string_view table = {}) const;

private:
    std::string resourcePath_;
    std::string defaultTable_;
};

#endif
