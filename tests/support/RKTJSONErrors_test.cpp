// What is said about texts that are not JSON, and how deep a text may be.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <variant>

#include "KorvoGitService/RKTJSON.h"

namespace {

RKTError errorOf(const std::string& text) {
    std::optional<RKTError> error;
    EXPECT_FALSE(RKTJSONSerialization::JSONObjectWithData(text, &error)) << text;
    return error.value();
}

std::optional<std::int64_t> positionOf(const std::string& text) {
    const auto information = errorOf(text).userInfo();
    const auto position = information.find(RKTError::NSJSONSerializationErrorIndex);
    return position == information.end()
               ? std::nullopt
               : std::optional(std::get<RKTNumber>(position->second).integerValue());
}

bool isReadable(const std::string& text) {
    return RKTJSONSerialization::JSONObjectWithData(text).has_value();
}

std::string arrays(int depth, const std::string& innermost) {
    return std::string(static_cast<std::size_t>(depth), '[') + innermost +
           std::string(static_cast<std::size_t>(depth), ']');
}

std::string dictionaries(int depth, const std::string& innermost) {
    std::string text = innermost;
    for (int level = 0; level < depth; ++level) {
        text = "{\"a\":" + text + "}";
    }
    return text;
}

TEST(RKTJSONErrors, NameTheBytePositionOfTheMistake) {
    EXPECT_EQ(positionOf("[1,]"), 3);
    EXPECT_EQ(positionOf("\xEF\xBB\xBF[1,]"), 6);
    EXPECT_EQ(positionOf("{\"a\" 1}"), 5);
    EXPECT_EQ(positionOf("{"), 1);
    EXPECT_EQ(positionOf(""), 0);
    EXPECT_EQ(positionOf("\xEF\xBB\xBF"), 3);
    EXPECT_EQ(positionOf("<html>"), 0);
    EXPECT_EQ(positionOf(std::string("{}\0", 3)), 2);
}

TEST(RKTJSONErrors, HaveADescriptionAndAReason) {
    const auto error = errorOf("nonsense");
    EXPECT_EQ(error.domain(), "NSCocoaErrorDomain");
    EXPECT_EQ(error.code(), 3840);
    EXPECT_EQ(error.localizedDescription(),
              "The text could not be read because it is not valid JSON.");
    const auto& reason = error.userInfo().at(RKTError::RKTUnderlyingTextKey);
    EXPECT_FALSE(std::get<std::string>(reason).empty());
    const auto& code = error.userInfo().at(RKTError::RKTUnderlyingCodeKey);
    EXPECT_NE(std::get<RKTNumber>(code).integerValue(), 0);
}

TEST(RKTJSONErrors, SayNothingOfWhatTheTextHolds) {
    for (const std::string text : {"{\"access_token\":\"s3cret\",}", "s3cret", "{s3cret:1}",
                                   "[\"s3cret\",18446744073709551616,]", "\"s3cret\""}) {
        const auto error = errorOf(text);
        for (const auto& [key, value] : error.userInfo()) {
            const auto* said = std::get_if<std::string>(&value);
            EXPECT_TRUE(!said || said->find("s3cret") == std::string::npos) << key;
        }
    }
}

TEST(RKTJSONErrors, AreNotNeeded) {
    EXPECT_FALSE(RKTJSONSerialization::JSONObjectWithData("["));
}

TEST(RKTJSONErrors, LeaveAnEarlierErrorAloneWhenTheTextIsGood) {
    std::optional<RKTError> error;
    EXPECT_TRUE(RKTJSONSerialization::JSONObjectWithData("[]", &error));
    EXPECT_FALSE(error);
}

class RKTJSONDepth : public testing::TestWithParam<std::string> {};

// With an integer beyond 64 bits a document is read in another way, which has the same limit.
INSTANTIATE_TEST_SUITE_P(Innermost, RKTJSONDepth,
                         testing::Values("", "1", "\"[[[{{{\"", "18446744073709551616"));

TEST_P(RKTJSONDepth, ReadsFiveHundredAndTwelveLevels) {
    EXPECT_TRUE(isReadable(arrays(511, GetParam())));
    EXPECT_TRUE(isReadable(arrays(512, GetParam())));
    const auto innermost = GetParam().empty() ? "{}" : "{\"a\":" + GetParam() + "}";
    EXPECT_TRUE(isReadable(dictionaries(510, innermost)));
    EXPECT_TRUE(isReadable(dictionaries(511, innermost)));
    EXPECT_TRUE(isReadable(arrays(256, dictionaries(255, innermost))));
}

TEST_P(RKTJSONDepth, RefusesOneMore) {
    EXPECT_FALSE(isReadable(arrays(513, GetParam())));
    const auto innermost = GetParam().empty() ? "{}" : "{\"a\":" + GetParam() + "}";
    EXPECT_FALSE(isReadable(dictionaries(512, innermost)));
    EXPECT_FALSE(isReadable(arrays(256, dictionaries(256, innermost))));
    EXPECT_FALSE(isReadable("[[]," + arrays(512, GetParam()) + ",[]]"));
}

TEST(RKTJSONDepth, IsOfLevelsNotOfBrackets) {
    std::string text = "[";
    for (int i = 0; i < 2000; ++i) {
        text += "[[1]],{},";
    }
    EXPECT_TRUE(isReadable(text + "[]]"));
}

TEST(RKTJSONDepth, HasACleanEndForAnyExcess) {
    for (const std::size_t depth : {1024u, 100'000u, 2'000'000u}) {
        EXPECT_FALSE(isReadable(std::string(depth, '[')));
        EXPECT_FALSE(isReadable(arrays(static_cast<int>(depth), "")));
    }
    std::string text;
    for (int i = 0; i < 200'000; ++i) {
        text += "{\"a\":";
    }
    EXPECT_FALSE(isReadable(text));
}

TEST(RKTJSONDepth, IsWalkedToTheBottom) {
    const auto document = RKTJSONSerialization::JSONObjectWithData(arrays(512, "7"));
    auto value = document.value().root();
    int levels = 0;
    while (const auto array = value.array()) {
        value = *array->begin();
        ++levels;
    }
    EXPECT_EQ(levels, 512);
    EXPECT_EQ(value.number(), RKTNumber(7));
}

}  // namespace
