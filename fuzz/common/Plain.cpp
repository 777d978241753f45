#include "fuzz/common/Plain.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace fuzz::plain {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

int hexValue(char c) {
    const auto place = std::string_view("0123456789abcdef").find(lowered({&c, 1}));
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

/// Takes one character of UTF-8 off the text; nothing when there is none.
std::optional<std::uint32_t> takeCharacter(std::string_view& text) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const std::size_t length = byte(0) < 0x80   ? 1
                               : byte(0) < 0xC0 ? 0
                               : byte(0) < 0xE0 ? 2
                               : byte(0) < 0xF0 ? 3
                               : byte(0) < 0xF8 ? 4
                                                : 0;
    if (length == 0 || length > text.size()) return std::nullopt;
    std::uint32_t character = length == 1 ? byte(0) : byte(0) & (0x7Fu >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if ((byte(index) & 0xC0) != 0x80) return std::nullopt;
        character = character << 6 | (byte(index) & 0x3F);
    }
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < smallest[length] || character > 0x10FFFF || isSurrogate) return std::nullopt;
    text.remove_prefix(length);
    return character;
}

bool isSpace(std::uint32_t c) {
    return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200B) || c == 0x2028 || c == 0x2029 || c == 0x202F ||
           c == 0x205F || c == 0x3000;
}

}  // namespace

bool isUTF8(std::string_view text) {
    while (!text.empty()) {
        if (!takeCharacter(text)) return false;
    }
    return true;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    while (!text.empty()) {
        if (text[0] != '%') {
            decoded += text[0];
            text.remove_prefix(1);
            continue;
        }
        if (text.size() < 3 || hexValue(text[1]) < 0 || hexValue(text[2]) < 0) return std::nullopt;
        decoded += static_cast<char>(hexValue(text[1]) * 16 + hexValue(text[2]));
        text.remove_prefix(3);
    }
    return decoded;
}

std::optional<std::string> decodedText(std::string_view text) {
    auto decoded = percentDecoded(text);
    return decoded && isUTF8(*decoded) ? decoded : std::nullopt;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces(1, text.substr(0, 0));
    std::size_t start = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == separator) {
            pieces.push_back(text.substr(place + 1, 0));
            start = place + 1;
        } else {
            pieces.back() = text.substr(start, place + 1 - start);
        }
    }
    return pieces;
}

bool isURLText(std::string_view text) {
    constexpr std::string_view allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=:@/?[]#%";
    return text.find_first_not_of(allowed) == std::string_view::npos &&
           std::ranges::count(text, '#') <= 1 && percentDecoded(text).has_value();
}

std::optional<std::string_view> queryOf(std::string_view url) {
    url = url.substr(0, url.find('#'));
    const auto mark = url.find('?');
    if (mark == std::string_view::npos) return std::nullopt;
    return url.substr(mark + 1);
}

Items queryItems(std::string_view query) {
    Items items;
    if (query.empty()) return items;
    for (const auto piece : split(query, '&')) {
        const auto equals = piece.find('=');
        auto name = decodedText(piece.substr(0, equals)).value_or("");
        std::optional<std::string> value;
        if (equals != std::string_view::npos) value = decodedText(piece.substr(equals + 1));
        items.emplace_back(std::move(name), std::move(value));
    }
    return items;
}

Dictionary folded(const Items& items) {
    Dictionary dictionary;
    for (const auto& [name, value] : items) {
        dictionary.erase(name);
        if (value) dictionary.emplace(name, *value);
    }
    return dictionary;
}

long long integerIn(std::string_view text) {
    text = withoutLeadingSpace(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text = withoutLeadingSpace(text.substr(1));
    std::string digits(text.substr(
        0, static_cast<std::size_t>(std::ranges::find_if_not(text, isDigit) - text.begin())));
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    using Limits = std::numeric_limits<long long>;
    const std::string limit = isNegative ? "9223372036854775808" : "9223372036854775807";
    if (digits.size() > limit.size() || (digits.size() == limit.size() && digits >= limit)) {
        return isNegative ? Limits::min() : Limits::max();
    }
    long long value = 0;
    for (const char digit : digits) value = value * 10 + (digit - '0');
    return isNegative ? -value : value;
}

std::string_view withoutLeadingSpace(std::string_view text) {
    while (!text.empty()) {
        auto rest = text;
        const auto character = takeCharacter(rest);
        if (!character || !isSpace(*character)) break;
        text = rest;
    }
    return text;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

}  // namespace fuzz::plain
