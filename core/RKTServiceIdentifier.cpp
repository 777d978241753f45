#include "KorvoGitService/RKTServiceIdentifier.h"

#include <bit>
#include <cstdint>
#include <utility>

#include "support/Percent.h"

namespace {

// The encoding: one byte for its version, one for the type, a word of eight bytes, most significant
// first, and for a text as many bytes as the word says.
constexpr char encodingVersion = 1;
constexpr std::size_t headerSize = 2;
constexpr std::size_t wordSize = 8;

enum EncodedType : char {
    EncodedText = 'T',
    EncodedBoolean = 'B',
    EncodedSigned = 'S',
    EncodedUnsigned = 'U',
    EncodedFloating = 'F',
};

std::string encoded(EncodedType type, std::uint64_t word) {
    std::string data = {encodingVersion, type};
    for (int shift = 56; shift >= 0; shift -= 8) data.push_back(static_cast<char>(word >> shift));
    return data;
}

std::string encodedNumber(const RKTNumber& number) {
    switch (number.type()) {
        case RKTNumber::Type::Boolean:
            return encoded(EncodedBoolean, number.boolValue() ? 1 : 0);
        case RKTNumber::Type::Signed:
            return encoded(EncodedSigned, static_cast<std::uint64_t>(number.integerValue()));
        case RKTNumber::Type::Unsigned:
            return encoded(EncodedUnsigned, number.unsignedIntegerValue());
        case RKTNumber::Type::Floating:
            break;
    }
    return encoded(EncodedFloating, std::bit_cast<std::uint64_t>(number.doubleValue()));
}

std::uint64_t decodedWord(std::string_view bytes) {
    std::uint64_t word = 0;
    for (const char byte : bytes) word = word << 8 | static_cast<unsigned char>(byte);
    return word;
}

std::optional<RKTNumber> decodedNumber(char type, std::uint64_t word) {
    switch (type) {
        case EncodedBoolean:
            if (word > 1) return std::nullopt;
            return RKTNumber(word == 1);
        case EncodedSigned:
            return RKTNumber(static_cast<std::int64_t>(word));
        case EncodedUnsigned:
            return RKTNumber(word);
        case EncodedFloating:
            return RKTNumber(std::bit_cast<double>(word));
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<std::string> RKTServiceIdentifier::stringValue() const {
    const auto* text = std::get_if<std::string>(&value_);
    return text ? std::optional(*text) : std::nullopt;
}

std::optional<RKTNumber> RKTServiceIdentifier::numberValue() const {
    const auto* number = std::get_if<RKTNumber>(&value_);
    return number ? std::optional(*number) : std::nullopt;
}

std::string RKTServiceIdentifier::description() const {
    const auto* text = std::get_if<std::string>(&value_);
    return text ? *text : std::get<RKTNumber>(value_).stringValue();
}

std::size_t RKTServiceIdentifier::hash() const {
    const auto* text = std::get_if<std::string>(&value_);
    return text ? std::hash<std::string>()(*text) : std::get<RKTNumber>(value_).hash();
}

std::string RKTServiceIdentifier::encodedData() const {
    const auto* text = std::get_if<std::string>(&value_);
    return text ? encoded(EncodedText, text->size()) + *text
                : encodedNumber(std::get<RKTNumber>(value_));
}

std::optional<RKTServiceIdentifier> RKTServiceIdentifier::identifierWithEncodedData(
    std::string_view data) {
    if (data.size() < headerSize + wordSize || data[0] != encodingVersion) return std::nullopt;
    const char type = data[1];
    const std::uint64_t word = decodedWord(data.substr(headerSize, wordSize));
    const std::string_view text = data.substr(headerSize + wordSize);
    if (type == EncodedText) {
        if (text.size() != word || !rkt::isUTF8(text)) return std::nullopt;
        return RKTServiceIdentifier(std::string(text));
    }
    const auto number = text.empty() ? decodedNumber(type, word) : std::nullopt;
    return number ? std::optional(RKTServiceIdentifier(*number)) : std::nullopt;
}
