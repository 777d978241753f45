#include "support/Text.h"

#include <openssl/evp.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>

#include "KorvoGitService/RKTScanner.h"

namespace rkt {
namespace {

/// The code point at `offset`, which moves behind it; negative for bytes that are not UTF-8.
UChar32 nextCharacter(std::string_view text, std::size_t& offset) {
    UChar32 character = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): the macro's own, in a defined order
    U8_NEXT(bytes, offset, text.size(), character);
    return character;
}

/// U+0027, U+2019, and what modifies a letter or is not seen: neither begins a word nor ends one.
/// Unicode's own list (Case_Ignorable) has the full stop and the colon too, which here end a word.
bool isIgnoredInWords(UChar32 character) {
    constexpr std::uint32_t kinds =
        U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK | U_GC_LM_MASK | U_GC_SK_MASK;
    return character == u'\'' || character == u'\u2019' || (U_GET_GC_MASK(character) & kinds) != 0;
}

bool isCased(UChar32 character) {
    return u_hasBinaryProperty(character, UCHAR_CASED) != 0;
}

/// Where the first word of text[start...] begins, or the text's end.
std::size_t wordStart(std::string_view text, std::size_t start) {
    for (std::size_t next = start; next < text.size(); start = next) {
        const auto character = nextCharacter(text, next);
        if (character >= 0 && isCased(character) && !isIgnoredInWords(character)) {
            return start;
        }
    }
    return text.size();
}

/// Where the word that begins at `start` ends.
std::size_t wordEnd(std::string_view text, std::size_t start) {
    for (std::size_t next = start; next < text.size(); start = next) {
        const auto character = nextCharacter(text, next);
        if (character < 0 || !(isCased(character) || isIgnoredInWords(character))) {
            return start;
        }
    }
    return text.size();
}

void appendCapitalizedWord(std::string& result, std::string_view word) {
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToTitle("", U_TITLECASE_WHOLE_STRING | U_TITLECASE_NO_BREAK_ADJUSTMENT,
                              nullptr, icu::StringPiece(word), sink, nullptr, status);
}

}  // namespace

std::int64_t integerFromText(std::string_view text) {
    using Limits = std::numeric_limits<std::int64_t>;
    RKTScanner scanner(text);
    const bool negative = scanner.scanString("-");
    if (!negative) {
        scanner.scanString("+");
    }
    const auto digits = scanner.scanUpToString(" ").value_or("");
    std::uint64_t size = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), size);
    if (read.ec == std::errc::result_out_of_range || size > std::uint64_t{Limits::max()}) {
        return negative ? Limits::min() : Limits::max();
    }
    const auto value = static_cast<std::int64_t>(size);
    return negative ? -value : value;
}

std::string capitalized(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t end = 0; end < text.size();) {
        const auto start = wordStart(text, end);
        result.append(text, end, start - end);
        end = wordEnd(text, start);
        appendCapitalizedWord(result, text.substr(start, end - start));
    }
    return result;
}

std::string base64(std::string_view bytes) {
    // A multiple of three, so that only the last piece is padded.
    constexpr std::size_t pieceSize = std::size_t{3} * 1024;
    std::array<unsigned char, pieceSize / 3 * 4 + 1> encoded;
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes.remove_prefix(std::min(pieceSize, bytes.size()))) {
        const auto piece = bytes.substr(0, pieceSize);
        const auto length =
            EVP_EncodeBlock(encoded.data(), reinterpret_cast<const unsigned char*>(piece.data()),
                            static_cast<int>(piece.size()));
        result.append(encoded.data(), encoded.data() + length);
    }
    return result;
}

std::string orNull(const std::optional<std::string>& text) {
    return text.value_or("(null)");
}

}  // namespace rkt
