#include "KorvoGitService/KorvoCore.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

#include "KorvoGitService/RKTJSON.h"

namespace {

class TypedLookup : public testing::Test {
protected:
    const std::optional<RKTJSONDocument> document_ = RKTJSONSerialization::JSONObjectWithData(
        R"({"text":"x","number":1,"flag":true,"list":[1],"map":{"a":1},"nothing":null,
            "text":2,"late":null,"late":"x"})");
    const RKTJSONValue root_ = document_.value().root();
    const RKTJSONDictionary members_ = root_.dictionary().value();

    /// Which types the value under `key` is of: text, number, array, dictionary.
    std::string typesOf(std::string_view key) const {
        std::string types;
        types += kc_objectOfClass<std::string_view>(members_, key) ? "t" : "";
        types += kc_objectOfClass<RKTNumber>(members_, key) ? "n" : "";
        types += kc_objectOfClass<RKTJSONArray>(members_, key) ? "a" : "";
        types += kc_objectOfClass<RKTJSONDictionary>(members_, key) ? "d" : "";
        return types;
    }
};

TEST_F(TypedLookup, FindsAValueOfTheTypeAskedForOnly) {
    EXPECT_EQ(typesOf("text"), "t");
    EXPECT_EQ(typesOf("number"), "n");
    EXPECT_EQ(typesOf("list"), "a");
    EXPECT_EQ(typesOf("map"), "d");
}

TEST_F(TypedLookup, TakesTrueAndFalseForNumbers) {
    EXPECT_EQ(typesOf("flag"), "n");
    EXPECT_EQ(kc_objectOfClass<RKTNumber>(members_, "flag"), RKTNumber(true));
}

TEST_F(TypedLookup, TakesNullForAbsent) {
    EXPECT_EQ(typesOf("nothing"), "");
    EXPECT_EQ(typesOf("no such key"), "");
}

TEST_F(TypedLookup, LooksAtTheFirstOfEqualKeysOnly) {
    EXPECT_FALSE(kc_objectOfClass<RKTNumber>(members_, "text"));
    EXPECT_EQ(typesOf("late"), "");
}

TEST_F(TypedLookup, FindsNothingInWhatIsNoDictionary) {
    EXPECT_EQ(kc_objectOfClass<std::string_view>(root_, "text"), "x");
    const auto list = members_.objectForKey("list").value();
    EXPECT_FALSE(kc_objectOfClass<RKTNumber>(list, "text"));
    EXPECT_FALSE(kc_objectOfClass<RKTNumber>(RKTJSONValue(), "text"));
}

}  // namespace
