// Percent-encoding (RFC 3986 section 2.1), and what counts as UTF-8.

#ifndef KORVOGITSERVICE_SUPPORT_PERCENT_H
#define KORVOGITSERVICE_SUPPORT_PERCENT_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "support/ASCII.h"

namespace rkt {

/// The characters that stand as they are in some part of a URL: letters, digits, and those named.
class CharacterTable {
public:
    consteval explicit CharacterTable(std::string_view besidesLettersAndDigits) {
        for (int c = 0; c < 128; ++c) {
            const char character = static_cast<char>(c);
            stands_[static_cast<unsigned char>(c)] =
                isASCIILetter(character) || isASCIIDigit(character) ||
                besidesLettersAndDigits.find(character) != std::string_view::npos;
        }
    }

    constexpr bool contains(char c) const { return stands_[static_cast<unsigned char>(c)]; }
    constexpr bool containsAll(std::string_view text) const { return run(text) == text.size(); }

    /// How many characters `text` begins with before one that is not in the table.
    constexpr std::size_t run(std::string_view text) const {
        std::size_t length = 0;
        while (text.size() - length >= 8 && containsEight(text.data() + length)) length += 8;
        while (length < text.size() && contains(text[length])) ++length;
        return length;
    }

private:
    /// Without a branch for each: a page has three hundred URLs.
    constexpr bool containsEight(const char* text) const {
        bool all = true;
        for (int i = 0; i < 8; ++i) all &= contains(text[i]);
        return all;
    }

    std::array<bool, 256> stands_{};
};

/// What stands anywhere (RFC 3986 section 2.3).
inline constexpr CharacterTable unreservedCharacters("-._~");
/// For plain text that becomes a part of a URL.
inline constexpr CharacterTable userOrHostCharacters("-._~!$&'()*+,;=");
inline constexpr CharacterTable pathCharacters("-._~!$&'()*+,;=:@/");
/// Of a relative path, where ":" would end a scheme.
inline constexpr CharacterTable firstSegmentCharacters("-._~!$&'()*+,;=@");
/// "&", which ends an item, and "=", which ends a name, stand neither in names nor in values.
inline constexpr CharacterTable queryItemCharacters("-._~!$'()*+,/:;?@");
/// Of form bodies: all that a query may hold. The "&" and "=" of a value stand as they are.
inline constexpr CharacterTable formValueCharacters("-._~!$&'()*+,/:;=?@");

/// Every byte that is not in `table` as "%" and two upper-case digits.
/// @return  how many these are
std::size_t appendPercentEncoded(std::string& result, std::string_view text,
                                 const CharacterTable& table);
std::string percentEncode(std::string_view text, const CharacterTable& table);

/// The byte that the "%" and two digits at the beginning of `text` stand for; nothing when it
/// begins otherwise.
std::optional<char> percentEncodedByte(std::string_view text);

/// Nothing when a "%" has no two hexadecimal digits after it or when the result is not UTF-8.
std::optional<std::string> percentDecode(std::string_view text);

std::string formValueEncoded(std::string_view value);

bool isUTF8(std::string_view text);

}  // namespace rkt

#endif
