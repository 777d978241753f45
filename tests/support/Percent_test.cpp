#include "support/Percent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/helpers/Corpus.h"

namespace {

using namespace std::literals;
using rkt::tests::textOrNothing;
using testing::Eq;
using testing::Optional;

TEST(Percent, EncodesFormValuesAsTheCorpusSays) {
    for (const auto& line : rkt::tests::corpus("percent")) {
        SCOPED_TRACE(line["id"]);
        EXPECT_EQ(rkt::formValueEncoded(line["text"].get<std::string>()),
                  textOrNothing(line["encoded"]));
    }
}

TEST(Percent, LeavesExactlyAQuerysCharactersInAFormValue) {
    const std::string_view literal = "!$&'()*+,-./:;=?@_~";
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const bool stands = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                            (byte >= 'a' && byte <= 'z') || literal.find(text) != literal.npos;
        EXPECT_EQ(rkt::formValueEncoded(text) == text, stands) << byte;
    }
}

TEST(Percent, EncodesEveryByteOfACharacterInUpperCase) {
    EXPECT_EQ(rkt::percentEncode("\u00e9\U0001F600 \x7F\0"sv, rkt::pathCharacters),
              "%C3%A9%F0%9F%98%80%20%7F%00");
    EXPECT_EQ(rkt::percentEncode("\xFF", rkt::pathCharacters), "%FF");
}

TEST(Percent, FindsTheOneCharacterThatDoesNotStand) {
    for (std::size_t size = 0; size <= 20; ++size) {
        const std::string longer(40, 'a');
        const auto plain = longer.substr(0, size);
        EXPECT_EQ(rkt::pathCharacters.run(std::string_view(longer).substr(0, size)), size);
        EXPECT_TRUE(rkt::pathCharacters.containsAll(plain)) << size;
        for (std::size_t place = 0; place < size; ++place) {
            std::string text = plain;
            text[place] = ' ';
            EXPECT_EQ(rkt::pathCharacters.run(text), place) << text;
            EXPECT_FALSE(rkt::pathCharacters.containsAll(text)) << text;
            std::string encoded = "<";
            EXPECT_EQ(rkt::appendPercentEncoded(encoded, text, rkt::pathCharacters), 1U);
            EXPECT_EQ(encoded, '<' + plain.substr(0, place) + "%20" + plain.substr(place + 1));
        }
    }
}

TEST(Percent, CountsWhatItEncodes) {
    std::string result;
    EXPECT_EQ(rkt::appendPercentEncoded(result, "", rkt::pathCharacters), 0U);
    EXPECT_EQ(rkt::appendPercentEncoded(result, "/a~", rkt::pathCharacters), 0U);
    EXPECT_EQ(rkt::appendPercentEncoded(result, " \n%\u00e9", rkt::pathCharacters), 5U);
    EXPECT_EQ(result, "/a~%20%0A%25%C3%A9");
}

TEST(Percent, EncodesAPercentSignThatLooksLikeAnEncoding) {
    EXPECT_EQ(rkt::percentEncode("%41", rkt::queryItemCharacters), "%2541");
}

TEST(Percent, DecodesBothCasesOfDigits) {
    EXPECT_THAT(rkt::percentDecode("%c3%A9%2f+%00"), Optional(Eq("\u00e9/+\0"s)));
    EXPECT_THAT(rkt::percentDecode(""), Optional(Eq("")));
}

TEST(Percent, DecodesNothingFromAnIncompleteEncoding) {
    for (const auto* text : {"%", "%4", "a%", "%4g", "%g4", "%%41", "%+1", "% 1"}) {
        EXPECT_EQ(rkt::percentDecode(text), std::nullopt) << text;
    }
}

TEST(Percent, DecodesNothingThatIsNotUTF8) {
    // A lone continuation, a truncated character, an overlong slash, a surrogate, beyond U+10FFFF.
    for (const auto* text : {"%80", "%e9", "a%C3", "%C0%AF", "%ED%A0%80", "%F4%90%80%80", "\xFF"}) {
        EXPECT_EQ(rkt::percentDecode(text), std::nullopt) << text;
    }
}

TEST(Percent, DecodesWhatItEncoded) {
    std::mt19937 random(20240601);
    std::uniform_int_distribution<int> character(1, 0x7F);
    std::uniform_int_distribution<std::size_t> length(0, 40);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (auto left = length(random); left > 0; --left) {
            text +=
                random() % 5 == 0 ? "\u4e2d" : std::string(1, static_cast<char>(character(random)));
        }
        EXPECT_EQ(rkt::percentDecode(rkt::percentEncode(text, rkt::pathCharacters)), text);
        EXPECT_EQ(rkt::percentDecode(rkt::percentEncode(text, rkt::queryItemCharacters)), text);
    }
}

TEST(Percent, TellsUTF8) {
    EXPECT_TRUE(rkt::isUTF8(""));
    EXPECT_TRUE(rkt::isUTF8("a\0\u00e9\U0010FFFF"sv));
    EXPECT_FALSE(rkt::isUTF8("a\xC3"));
    EXPECT_FALSE(rkt::isUTF8("\xC0\x80"));
    EXPECT_FALSE(rkt::isUTF8("\xED\xBF\xBF"));
}

}  // namespace
