#include "KorvoGitService/RKTJSON.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/helpers/Corpus.h"

namespace {

using namespace std::literals;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::input_iterator<RKTJSONArray::Iterator>);
static_assert(std::input_iterator<RKTJSONDictionary::Iterator>);

std::optional<RKTJSONDocument> parse(std::string_view text) {
    return RKTJSONSerialization::JSONObjectWithData(text);
}

/// The first element of the array that `text` is.
RKTJSONValue first(const std::optional<RKTJSONDocument>& document) {
    return *document.value().root().array().value().begin();
}

std::optional<RKTNumber> number(std::string_view literal) {
    const auto document = parse("[" + std::string(literal) + "]");
    return document ? first(document).number() : std::nullopt;
}

std::optional<std::string> string(std::string_view literal) {
    const auto document = parse("[" + std::string(literal) + "]");
    const auto text = document ? first(document).string() : std::nullopt;
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::string bytesFromHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

void expectNumber(const RKTNumber& expected, RKTNumber::Type type, const RKTJSONValue& value) {
    const auto found = value.number();
    ASSERT_TRUE(found);
    EXPECT_EQ(found->type(), type);
    EXPECT_EQ(*found, expected) << found->stringValue();
}

void expectValue(const nlohmann::json& expected, const RKTJSONValue& value);

void expectMembers(const nlohmann::json& expected, const RKTJSONDictionary& dictionary) {
    std::set<std::string_view> names;
    for (const auto& [key, value] : dictionary) {
        names.insert(key);
    }
    EXPECT_EQ(names.size(), expected.size());
    for (const auto& member : expected) {
        const auto value = dictionary.objectForKey(member[0].get<std::string>());
        ASSERT_TRUE(value) << member[0];
        expectValue(member[1], *value);
    }
}

/// `expected` is an array, null, or an object whose only key names the type.
void expectValue(const nlohmann::json& expected, const RKTJSONValue& value) {
    if (expected.is_null()) {
        EXPECT_FALSE(value.number() || value.string() || value.array() || value.dictionary());
    } else if (expected.is_array()) {
        const auto array = value.array();
        ASSERT_TRUE(array);
        ASSERT_EQ(array->count(), expected.size());
        std::size_t index = 0;
        for (const auto element : *array) {
            expectValue(expected[index++], element);
        }
    } else if (expected.contains("d")) {
        const auto dictionary = value.dictionary();
        ASSERT_TRUE(dictionary);
        expectMembers(expected["d"], *dictionary);
    } else if (expected.contains("s")) {
        EXPECT_EQ(value.string(), expected["s"].get<std::string>());
    } else if (expected.contains("b")) {
        expectNumber(expected["b"].get<bool>(), RKTNumber::Type::Boolean, value);
    } else if (expected.contains("int")) {
        expectNumber(std::stoll(expected["int"].get<std::string>()), RKTNumber::Type::Signed,
                     value);
    } else if (expected.contains("uint")) {
        expectNumber(std::stoull(expected["uint"].get<std::string>()), RKTNumber::Type::Unsigned,
                     value);
    } else {
        // An integer beyond 64 bits, "decimal", becomes the nearest floating-point number.
        const auto& text = expected.contains("double") ? expected["double"] : expected["decimal"];
        const double wanted = std::strtod(text.get<std::string>().c_str(), nullptr);
        expectNumber(wanted, RKTNumber::Type::Floating, value);
        EXPECT_EQ(std::signbit(value.number()->doubleValue()), std::signbit(wanted));
    }
}

TEST(RKTJSON, ReadsEveryCaseOfTheCorpus) {
    for (const auto& entry : rkt::tests::corpus("json")) {
        SCOPED_TRACE(entry["id"]);
        std::optional<RKTError> error;
        const auto document = RKTJSONSerialization::JSONObjectWithData(
            bytesFromHex(entry["hex"].get<std::string>()), &error);
        ASSERT_EQ(document.has_value(), entry["ok"].get<bool>());
        ASSERT_EQ(error.has_value(), !document.has_value());
        if (error) {
            EXPECT_EQ(error->domain(), "NSCocoaErrorDomain");
            EXPECT_EQ(error->code(), 3840);
        } else if (entry.contains("value")) {
            expectValue(entry["value"], document->root());
        }
    }
}

TEST(RKTJSON, KeepsIntegersExactToSixtyFourBits) {
    EXPECT_EQ(number("9223372036854775807"), RKTNumber(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(number("-9223372036854775808"), RKTNumber(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(number("18446744073709551615"), RKTNumber(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(number("18446744073709551615")->type(), RKTNumber::Type::Unsigned);
}

TEST(RKTJSON, MakesAFloatingPointNumberOfALargerInteger) {
    for (const std::string digits :
         {"18446744073709551616", "-9223372036854775809", "18446744073709553665",
          "123456789012345678901234567890", "100000000000000000000000"}) {
        const auto found = number(digits);
        ASSERT_TRUE(found) << digits;
        EXPECT_EQ(found->type(), RKTNumber::Type::Floating);
        EXPECT_EQ(found->doubleValue(), std::strtod(digits.c_str(), nullptr));
    }
    const std::string longest = "1" + std::string(308, '0');
    EXPECT_EQ(number(longest), RKTNumber(1e308));
}

TEST(RKTJSON, RefusesNumbersBeyondTheFloatingPointRange) {
    for (const std::string literal : {"1e400", "-1e400", "1e309", "1.7976931348623159e308",
                                      "123123e100000", "1e99999999999999999999"}) {
        EXPECT_FALSE(number(literal)) << literal;
        EXPECT_FALSE(parse("[18446744073709551616," + literal + "]")) << literal;
    }
    EXPECT_FALSE(number("1" + std::string(309, '0')));
    EXPECT_FALSE(number("-" + std::string(400, '9')));
}

TEST(RKTJSON, ReadsZeroesAndNumbersTooSmallToTellFromZero) {
    EXPECT_EQ(number("-0")->type(), RKTNumber::Type::Signed);
    EXPECT_TRUE(std::signbit(number("-0.0")->doubleValue()));
    for (const std::string literal : {"0e400", "-0e400", "0.000e309", "0e99999999999999999999",
                                      "1e-400", "123e-10000000", "1e-99999999999999999999"}) {
        ASSERT_TRUE(number(literal)) << literal;
        EXPECT_EQ(number(literal)->type(), RKTNumber::Type::Floating) << literal;
        EXPECT_EQ(number(literal), RKTNumber(0)) << literal;
    }
}

TEST(RKTJSON, TakesANumberWithAFractionOrAnExponentForFloatingPoint) {
    EXPECT_EQ(number("1")->type(), RKTNumber::Type::Signed);
    EXPECT_EQ(number("1.0")->type(), RKTNumber::Type::Floating);
    EXPECT_EQ(number("1e0")->type(), RKTNumber::Type::Floating);
    EXPECT_EQ(number("true")->type(), RKTNumber::Type::Boolean);
    EXPECT_EQ(number("1e0000000000000000000000001"), RKTNumber(10));
    EXPECT_EQ(number("0." + std::string(400, '0') + "1e401"), RKTNumber(1));
    EXPECT_EQ(number("2.2250738585072011e-308"), RKTNumber(2.2250738585072011e-308));
}

TEST(RKTJSON, ChangesNothingElseInADocumentWithALargeInteger) {
    const auto document = parse(
        "\xEF\xBB\xBF {\"big\" : 18446744073709551616, "
        "\"\\u0000\\\"\\\\\\n\\u001f/é\":\"\\u0000\\\"\\\\"
        "\\b\\ud83d\\ude00/[{:,\" , \"list\":[ [], {}, [{}], true,false,null,-7,"
        "18446744073709551615,3599.9,-0.0,1e-7,\"\"], \"\":{\"a\":[1]}, \"a\":1, \"\\u0061\":2}");
    ASSERT_TRUE(document);
    const auto members = document->root().dictionary().value();
    EXPECT_EQ(members.objectForKey("big")->number(), RKTNumber(18446744073709551616.0));
    EXPECT_EQ(members.objectForKey("\0\"\\\n\x1f/é"sv)->string(), "\0\"\\\b😀/[{:,"sv);
    EXPECT_EQ(members.objectForKey("a")->number(), RKTNumber(1));
    EXPECT_EQ(std::distance(members.begin(), members.end()), 6);
    const auto nested = members.objectForKey("")->dictionary();
    EXPECT_EQ(nested->objectForKey("a")->array()->count(), 1u);

    const nlohmann::json list = {nlohmann::json::array(),
                                 {{"d", nlohmann::json::array()}},
                                 nlohmann::json::array({{{"d", nlohmann::json::array()}}}),
                                 {{"b", true}},
                                 {{"b", false}},
                                 nullptr,
                                 {{"int", "-7"}},
                                 {{"uint", "18446744073709551615"}},
                                 {{"double", "3599.9"}},
                                 {{"double", "-0.0"}},
                                 {{"double", "1e-7"}},
                                 {{"s", ""}}};
    expectValue(list, *members.objectForKey("list"));
}

TEST(RKTJSON, IsAsStrictInADocumentWithALargeInteger) {
    const auto large = "[18446744073709551616"s;
    EXPECT_TRUE(parse(large + "]"));
    for (const auto& rest :
         {","s, ",]"s, ",01]"s, ",1.]"s, ",-]"s, ",NaN]"s, ",\"\\ud83d\"]"s, ",\"\xff\"]"s,
          ",\"\n\"]"s, "]x"s, "],"s, "]]"s, "]//"s, "]\0"s, "]\0x"s, "]\xEF\xBB\xBF"s, ""s, "}"s}) {
        EXPECT_FALSE(parse(large + rest)) << rest;
    }
    EXPECT_FALSE(parse("\xEF\xBB\xBF\xEF\xBB\xBF" + large + "]"));
    EXPECT_FALSE(parse("18446744073709551616"));
    EXPECT_FALSE(parse("{18446744073709551616:1}"));
}

TEST(RKTJSON, RefusesATopLevelThatIsNeitherArrayNorDictionary) {
    for (const auto text : {"1", "-1.5", "true", "null", "\"x\"", "\"\"", " 0 "}) {
        EXPECT_FALSE(parse(text)) << text;
    }
}

TEST(RKTJSON, RefusesBlankTexts) {
    EXPECT_FALSE(parse({}));
    EXPECT_FALSE(parse(""));
    EXPECT_FALSE(parse(" \t\r\n"));
    EXPECT_FALSE(parse("\xEF\xBB\xBF"));
    EXPECT_FALSE(parse("\xEF\xBB\xBF \n"));
    EXPECT_FALSE(parse("\xEF\xBB"));
}

TEST(RKTJSON, SkipsOneByteOrderMark) {
    EXPECT_TRUE(parse("\xEF\xBB\xBF[]"));
    EXPECT_TRUE(parse("\xEF\xBB\xBF [] "));
    EXPECT_FALSE(parse("\xEF\xBB\xBF\xEF\xBB\xBF[]"));
}

TEST(RKTJSON, ReadsEscapesAndCharactersBeyondTheBasicPlane) {
    EXPECT_EQ(string(R"("\"\\\/\b\f\n\r\t\u00e9")"), "\"\\/\b\f\n\r\t\u00e9");
    EXPECT_EQ(string(R"("a\u0000b")"), "a\0b"s);
    EXPECT_EQ(string(R"("\ud83d\ude00")"), "😀");
    for (const auto literal : {R"("\ud83d")", R"("\ude00")", R"("\ud83d\ud83d")", R"("\ud83dx")",
                               R"("\ude00\ud83d")", R"("\u12g4")", R"("\x41")", R"("\)"}) {
        EXPECT_FALSE(string(literal)) << literal;
    }
}

TEST(RKTJSON, RefusesWhatIsNotUTF8) {
    for (const auto bytes : {"\xff", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82"}) {
        EXPECT_FALSE(string("\"" + std::string(bytes) + "\""));
        EXPECT_FALSE(parse("[]" + std::string(bytes)));
    }
}

TEST(RKTJSON, CountsTheFirstOfEqualKeys) {
    const auto document = parse(R"({"a":1,"\u0061":2,"b":null,"b":3,"é":4,"é":5,"é":6})");
    const auto members = document->root().dictionary().value();
    EXPECT_EQ(members.objectForKey("a")->number(), RKTNumber(1));
    EXPECT_FALSE(members.objectForKey("b")->number());
    EXPECT_EQ(members.objectForKey("e\u0301")->number(), RKTNumber(5));
    EXPECT_EQ(members.objectForKey("\u00e9")->number(), RKTNumber(4));
    EXPECT_FALSE(members.objectForKey("A"));
    EXPECT_FALSE(members.objectForKey(""));
}

TEST(RKTJSON, ComparesKeysByteByByte) {
    const auto document = parse(R"({"a\u0000b":1,"a":2,"a\u0000":3})");
    const auto members = document->root().dictionary().value();
    EXPECT_EQ(members.objectForKey("a")->number(), RKTNumber(2));
    EXPECT_EQ(members.objectForKey("a\0"sv)->number(), RKTNumber(3));
    EXPECT_EQ(members.objectForKey("a\0b"sv)->number(), RKTNumber(1));
}

TEST(RKTJSON, GoesThroughTheMembersInOrder) {
    const auto document = parse(R"({"x":[1,[2]],"y":{"x":3},"x":"z","n":null})");
    std::vector<std::string> names;
    const auto members = document->root().dictionary().value();
    for (const auto& [key, value] : members) {
        names.emplace_back(key);
    }
    EXPECT_THAT(names, ElementsAre("x", "y", "x", "n"));
}

TEST(RKTJSON, GoesThroughTheElementsInOrder) {
    const auto document = parse(R"([1,[9,9],{"a":9},"x",2])");
    const auto array = document->root().array().value();
    std::vector<std::int64_t> numbers;
    for (const auto element : array) {
        numbers.push_back(element.number().value_or(-1).integerValue());
    }
    EXPECT_THAT(numbers, ElementsAre(1, -1, -1, -1, 2));
    EXPECT_EQ(array.count(), 5u);
    EXPECT_EQ(first(parse("[[]]")).array()->count(), 0u);
}

TEST(RKTJSON, GivesAValueForItsOwnTypeOnly) {
    const auto document = parse(R"(["1",1,[],{},null])");
    std::vector<int> types;
    const auto array = document->root().array().value();
    for (const auto value : array) {
        types.push_back((value.string() ? 1 : 0) + (value.number() ? 2 : 0) +
                        (value.array() ? 4 : 0) + (value.dictionary() ? 8 : 0));
    }
    EXPECT_THAT(types, ElementsAre(1, 2, 4, 8, 0));
}

TEST(RKTJSON, HasValuesWithoutADocumentThatAreOfNoType) {
    const RKTJSONValue value;
    EXPECT_FALSE(value.number() || value.string() || value.array() || value.dictionary());
}

TEST(RKTJSON, HasAnEmptyDictionary) {
    const auto members = RKTJSONSerialization::emptyDictionary().root().dictionary();
    ASSERT_TRUE(members);
    EXPECT_TRUE(members->begin() == members->end());
    EXPECT_EQ(&RKTJSONSerialization::emptyDictionary(), &RKTJSONSerialization::emptyDictionary());
}

}  // namespace
