// Small operations on UTF-8 text.

#ifndef KORVOGITSERVICE_SUPPORT_TEXT_H
#define KORVOGITSERVICE_SUPPORT_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace rkt {

/// `integerValue` of a text: a sign and decimal digits (ASCII) up to the first other character,
/// white space skipped before each. 0 when there are no digits; clamped to the range.
std::int64_t integerFromText(std::string_view text);

/// `localizedCapitalizedString` by rules that are the same in every language: the first letter of
/// each word in title case, the following ones in lower case. A word ends at everything that is
/// neither a cased letter nor, as an apostrophe or an accent, ignored in such matters; so at
/// digits, hyphens and blanks.
std::string capitalized(std::string_view text);

/// In one line, with padding (RFC 4648 section 4).
std::string base64(std::string_view bytes);

/// The text, or "(null)": what an absent text is in a format.
std::string orNull(const std::optional<std::string>& text);

}  // namespace rkt

#endif
