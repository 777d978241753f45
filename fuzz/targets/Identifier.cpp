// Encoded identifiers. The input is the encoding, and what is encoded.

#include "KorvoGitService/RKTServiceIdentifier.h"

#include <bit>
#include <cstdint>

#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"

namespace {

using fuzz::require;

void checkRoundTrip(const RKTServiceIdentifier& identifier) {
    const auto data = identifier.encodedData();
    const auto decoded = RKTServiceIdentifier::identifierWithEncodedData(data);
    require(decoded.has_value(), "what is encoded is decoded");
    require(*decoded == identifier && decoded->hash() == identifier.hash(), "to its equal");
    require(decoded->encodedData() == data, "with the same encoding");
    require(decoded->description() == identifier.description(), "and description");
    const auto number = identifier.numberValue();
    require(!number || decoded->numberValue()->type() == number->type(), "and type");
    for (std::size_t size = 0; size < data.size(); size += size / 2 + 1) {
        require(!RKTServiceIdentifier::identifierWithEncodedData(
                    std::string_view(data).substr(0, size)),
                "a part is no encoding");
    }
    require(!RKTServiceIdentifier::identifierWithEncodedData(data + '\0'), "nor is too much");
}

void checkText(std::string_view text) {
    const RKTServiceIdentifier identifier{std::string(text)};
    if (fuzz::plain::isUTF8(text)) {
        checkRoundTrip(identifier);
    } else {
        require(!RKTServiceIdentifier::identifierWithEncodedData(identifier.encodedData()),
                "what is no text is not decoded as one");
    }
}

}  // namespace

FUZZ_TARGET(Identifier) {
    if (const auto identifier = RKTServiceIdentifier::identifierWithEncodedData(input)) {
        require(identifier->encodedData() == input, "one identifier has one encoding");
        checkRoundTrip(*identifier);
    }
    checkText(input);
    std::uint64_t word = 0;
    for (int count = 0; count < 8; ++count) word = word << 8 | fuzz::takeByte(input);
    for (const RKTNumber& number :
         {RKTNumber(word % 2 == 1), RKTNumber(static_cast<std::int64_t>(word)), RKTNumber(word),
          RKTNumber(std::bit_cast<double>(word))}) {
        checkRoundTrip(RKTServiceIdentifier(number));
    }
}
