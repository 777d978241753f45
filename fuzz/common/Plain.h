// The rules of the library's readers a second time, written for plainness and nothing else.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fuzz::plain {

/// RFC 3629: no overlong form, no surrogate, nothing beyond U+10FFFF.
bool isUTF8(std::string_view text);

/// Nothing for a "%" without two hexadecimal digits; whether the rest is UTF-8 is not asked.
std::optional<std::string> percentDecoded(std::string_view text);

/// The same, but nothing either when the result is not UTF-8.
std::optional<std::string> decodedText(std::string_view text);

std::vector<std::string_view> split(std::string_view text, char separator);

/// Whether a text's characters are those of a URL.
bool isURLText(std::string_view text);

using Items = std::vector<std::pair<std::string, std::optional<std::string>>>;
using Dictionary = std::map<std::string, std::string, std::less<>>;

/// What stands between the first "?" of a URL and its fragment; nothing without a "?".
std::optional<std::string_view> queryOf(std::string_view url);
/// The items of a query, decoded.
Items queryItems(std::string_view query);
/// A later item wins, one without a value removes.
Dictionary folded(const Items& items);

/// `integerValue` of a text: a sign and decimal digits, clamped; white space before each skipped.
long long integerIn(std::string_view text);

/// The text without the white space at its beginning (Unicode's, the no-break ones included).
std::string_view withoutLeadingSpace(std::string_view text);

std::string lowered(std::string_view text);

}  // namespace fuzz::plain
