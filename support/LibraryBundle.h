// The library's own texts.

#ifndef KORVOGITSERVICE_SUPPORT_LIBRARYBUNDLE_H
#define KORVOGITSERVICE_SUPPORT_LIBRARYBUNDLE_H

#include <string>
#include <string_view>

#include "KorvoGitService/RKTBundle.h"

namespace rkt {

/// The bundle that belongs to the binary which holds this library's code. Looked up once per
/// process and never destroyed, so that it serves other objects' destructors too. Any thread.
const RKTBundle& libraryBundle();

/// Marks the literal of a text that is looked up elsewhere; does nothing. The list of texts for
/// translators is made of the literals in calls of localized(), localizable() and
/// RKTServiceLocalizedString(), and of the status texts.
constexpr std::string_view localizable(std::string_view key) {
    return key;
}

/// A text for a person, from the library's default table; the key itself where there is no
/// translation.
std::string localized(std::string_view key);

}  // namespace rkt

#endif
