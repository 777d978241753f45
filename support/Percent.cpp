#include "support/Percent.h"

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>

namespace rkt {

std::size_t appendPercentEncoded(std::string& result, std::string_view text,
                                 const CharacterTable& table) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    for (std::size_t encoded = 0;; ++encoded) {
        const std::size_t run = table.run(text);
        result.append(text.substr(0, run));
        if (run == text.size()) return encoded;
        const auto byte = static_cast<unsigned char>(text[run]);
        result += '%';
        result += digits[byte >> 4U];
        result += digits[byte & 15U];
        text.remove_prefix(run + 1);
    }
}

std::string percentEncode(std::string_view text, const CharacterTable& table) {
    std::string encoded;
    encoded.reserve(text.size());
    appendPercentEncoded(encoded, text, table);
    return encoded;
}

std::optional<char> percentEncodedByte(std::string_view text) {
    if (text.size() < 3 || text[0] != '%') return std::nullopt;
    const int high = hexDigitValue(text[1]);
    const int low = hexDigitValue(text[2]);
    if (high < 0 || low < 0) return std::nullopt;
    return static_cast<char>(high * 16 + low);
}

std::optional<std::string> percentDecode(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const auto byte = percentEncodedByte(text.substr(i));
        if (!byte) return std::nullopt;
        decoded += *byte;
        i += 2;
    }
    if (!isUTF8(decoded)) return std::nullopt;
    return decoded;
}

std::string formValueEncoded(std::string_view value) {
    return percentEncode(value, formValueCharacters);
}

bool isUTF8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    for (std::size_t offset = 0; offset < text.size();) {
        UChar32 character = 0;
        // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): the macro's own, in a defined order
        U8_NEXT(bytes, offset, text.size(), character);
        if (character < 0) return false;
    }
    return true;
}

}  // namespace rkt
