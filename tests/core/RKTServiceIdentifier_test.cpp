#include "KorvoGitService/RKTServiceIdentifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string_view>
#include <unordered_set>

namespace {

using testing::Optional;

TEST(RKTServiceIdentifier, IsATextOrANumber) {
    const RKTServiceIdentifier text("{uuid}");
    EXPECT_THAT(text.stringValue(), Optional(std::string("{uuid}")));
    EXPECT_EQ(text.numberValue(), std::nullopt);
    EXPECT_EQ(RKTServiceIdentifier(std::string_view("{uuid} and more", 6)), text);
    const RKTServiceIdentifier number(17);
    EXPECT_EQ(number.stringValue(), std::nullopt);
    EXPECT_THAT(number.numberValue(), Optional(RKTNumber(17)));
}

TEST(RKTServiceIdentifier, TakesZeroForANumber) {
    EXPECT_THAT(RKTServiceIdentifier(0).numberValue(), Optional(RKTNumber(0)));
}

TEST(RKTServiceIdentifier, ComparesByValue) {
    EXPECT_EQ(RKTServiceIdentifier("a"), RKTServiceIdentifier(std::string("a")));
    EXPECT_NE(RKTServiceIdentifier("a"), RKTServiceIdentifier("A"));
    EXPECT_EQ(RKTServiceIdentifier(1), RKTServiceIdentifier(1U));
    EXPECT_EQ(RKTServiceIdentifier(1), RKTServiceIdentifier(RKTNumber(1.0)));
    EXPECT_NE(RKTServiceIdentifier(1), RKTServiceIdentifier(2));
}

TEST(RKTServiceIdentifier, KeepsTextsAndNumbersApart) {
    EXPECT_NE(RKTServiceIdentifier("1"), RKTServiceIdentifier(1));
}

TEST(RKTServiceIdentifier, IsAKeyOfHashTables) {
    const std::unordered_set<RKTServiceIdentifier> identifiers = {1, RKTNumber(1.0), "1", "one"};
    EXPECT_EQ(identifiers.size(), 3U);
    EXPECT_EQ(RKTServiceIdentifier(1).hash(), RKTServiceIdentifier(RKTNumber(1.0)).hash());
    EXPECT_TRUE(identifiers.contains("one"));
}

TEST(RKTServiceIdentifier, DescribesItselfByItsValue) {
    EXPECT_EQ(RKTServiceIdentifier("{uuid}").description(), "{uuid}");
    EXPECT_EQ(RKTServiceIdentifier(1296269).description(), "1296269");
}

class RKTServiceIdentifierCoding : public testing::TestWithParam<RKTServiceIdentifier> {};

TEST_P(RKTServiceIdentifierCoding, ComesBackAsItWas) {
    const auto decoded = RKTServiceIdentifier::identifierWithEncodedData(GetParam().encodedData());
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, GetParam());
    EXPECT_EQ(decoded->encodedData(), GetParam().encodedData());
    const auto number = GetParam().numberValue();
    if (number) {
        EXPECT_EQ(decoded->numberValue().value().type(), number->type());
    }
}

TEST_P(RKTServiceIdentifierCoding, RefusesBytesThatAreCutShort) {
    const std::string data = GetParam().encodedData();
    for (std::size_t length = 0; length < data.size(); ++length) {
        EXPECT_EQ(RKTServiceIdentifier::identifierWithEncodedData(data.substr(0, length)),
                  std::nullopt)
            << length;
    }
}

TEST_P(RKTServiceIdentifierCoding, RefusesBytesThatAreTooLong) {
    EXPECT_EQ(RKTServiceIdentifier::identifierWithEncodedData(GetParam().encodedData() + "x"),
              std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Values, RKTServiceIdentifierCoding,
    testing::Values(RKTServiceIdentifier(""), RKTServiceIdentifier("{26554729-595f}"),
                    RKTServiceIdentifier("\xc3\xa9t\xc3\xa9"),
                    RKTServiceIdentifier(std::string("a\0b", 3)), RKTServiceIdentifier(true),
                    RKTServiceIdentifier(false), RKTServiceIdentifier(0), RKTServiceIdentifier(-1),
                    RKTServiceIdentifier(std::numeric_limits<std::int64_t>::min()),
                    RKTServiceIdentifier(std::numeric_limits<std::uint64_t>::max()),
                    RKTServiceIdentifier(RKTNumber(-2.5)),
                    RKTServiceIdentifier(RKTNumber(std::numeric_limits<double>::quiet_NaN()))));

/// What a program stored years ago.
TEST(RKTServiceIdentifier, ReadsTheBytesOfItsFirstVersion) {
    const auto decoded = [](const char* bytes, std::size_t size) {
        return RKTServiceIdentifier::identifierWithEncodedData(std::string_view(bytes, size));
    };
    EXPECT_THAT(decoded("\1T\0\0\0\0\0\0\0\2hi", 12), Optional(RKTServiceIdentifier("hi")));
    EXPECT_THAT(decoded("\1S\xff\xff\xff\xff\xff\xff\xff\xfe", 10),
                Optional(RKTServiceIdentifier(-2)));
    EXPECT_THAT(decoded("\1U\xff\xff\xff\xff\xff\xff\xff\xff", 10),
                Optional(RKTServiceIdentifier(std::numeric_limits<std::uint64_t>::max())));
    EXPECT_THAT(decoded("\1B\0\0\0\0\0\0\0\1", 10), Optional(RKTServiceIdentifier(true)));
    EXPECT_THAT(decoded("\1F\x3f\xf8\0\0\0\0\0\0", 10),
                Optional(RKTServiceIdentifier(RKTNumber(1.5))));
}

TEST(RKTServiceIdentifier, RefusesBytesThatItDoesNotWrite) {
    const auto refused = [](std::string_view data) {
        return RKTServiceIdentifier::identifierWithEncodedData(data) == std::nullopt;
    };
    const std::string one("\0\0\0\0\0\0\0\1", 8);
    const std::string two("\0\0\0\0\0\0\0\2", 8);
    const std::string all(8, '\xff');
    EXPECT_TRUE(refused(std::string("\2S") + one)) << "another version";
    EXPECT_TRUE(refused(std::string("\1X") + one)) << "an unknown type";
    EXPECT_TRUE(refused(std::string("\1B") + two)) << "neither true nor false";
    EXPECT_TRUE(refused(std::string("\1T") + one + "\xff")) << "not UTF-8";
    EXPECT_TRUE(refused(std::string("\1T") + one + "ab")) << "longer than it says";
    EXPECT_TRUE(refused(std::string("\1T") + all + "ab")) << "shorter than it says";
    EXPECT_TRUE(refused(std::string("\1S") + one + "ab")) << "a number with a text";
}

}  // namespace
