// Letters and digits of ASCII, whatever the locale says: protocol texts know no others.

#ifndef KORVOGITSERVICE_SUPPORT_ASCII_H
#define KORVOGITSERVICE_SUPPORT_ASCII_H

#include <algorithm>
#include <string>
#include <string_view>

namespace rkt {

constexpr bool isASCIIDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool isASCIILetter(char c) {
    return asciiLower(c) >= 'a' && asciiLower(c) <= 'z';
}

/// -1 when `c` is no hexadecimal digit.
constexpr int hexDigitValue(char c) {
    if (isASCIIDigit(c)) return c - '0';
    const char lower = asciiLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

constexpr bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, asciiLower, asciiLower);
}

inline std::string asciiLowered(std::string_view text) {
    std::string lowered(text);
    std::ranges::transform(lowered, lowered.begin(), asciiLower);
    return lowered;
}

/// Without the blanks and tabs at both ends: "optional white space" of HTTP (RFC 9110
/// section 5.6.3).
constexpr std::string_view withoutOuterBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace rkt

#endif
