#include "support/JSONReading.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Numbers = std::vector<int>;

/// The numbers of the members of interest, as they stand in the text.
Numbers numbersOfMembers(const std::string& text, std::initializer_list<std::string_view> wanted) {
    const auto document = RKTJSONSerialization::JSONObjectWithData(text);
    rkt::KeyTable keys;
    for (const auto key : wanted) keys.add(key);
    Numbers numbers;
    rkt::visitMembers(
        *document->root().dictionary(), keys,
        [](void* context, std::uint8_t key, const RKTJSONValue&) {
            static_cast<Numbers*>(context)->push_back(key);
            return true;
        },
        &numbers);
    return numbers;
}

TEST(JSONReading, ReadsInPlaceWhatIsReadFromACopyAndLeavesTheTextAsItWas) {
    for (const std::string given : {R"({"a":[1,2.5,"\u00e9"]})", "[]", "\xEF\xBB\xBF[\"x\"]",
                                    "[36893488147419103232]", "", "  ", "{\"a\":}", "[1e400]"}) {
        std::string text = given;
        std::optional<RKTError> ownError;
        std::optional<RKTError> error;
        const auto inPlace = rkt::JSONDocumentInPlace(text, &ownError);
        const auto copied = RKTJSONSerialization::JSONObjectWithData(given, &error);
        EXPECT_EQ(text, given);
        ASSERT_EQ(inPlace.has_value(), copied.has_value()) << given;
        ASSERT_EQ(ownError.has_value(), error.has_value()) << given;
        if (error) {
            EXPECT_EQ(ownError->code(), error->code());
        }
    }
}

TEST(JSONReading, ADocumentReadInPlaceOutlivesItsText) {
    std::optional<RKTJSONDocument> document;
    {
        std::string text = R"({"name":"a text that is too long for a string's own room"})";
        document = rkt::JSONDocumentInPlace(text, nullptr);
        text.assign(text.size(), '?');
    }
    EXPECT_EQ(document->root().dictionary()->objectForKey("name")->string(),
              "a text that is too long for a string's own room");
}

TEST(JSONReading, VisitsTheMembersOfInterestWithTheirNumbers) {
    const std::string longKey(300, 'k');
    EXPECT_EQ(numbersOfMembers(R"({"id":1,"":2,")" + longKey + R"(":3,"name":4,"id":5})",
                               {"id", longKey, ""}),
              (Numbers{0, 2, 1, 0}));
}

TEST(JSONReading, VisitsNothingWhereNothingIsOfInterest) {
    EXPECT_EQ(numbersOfMembers(R"({"id":1,"name":2,"":3})", {}), Numbers());
}

TEST(JSONReading, VisitsNoMoreThanIsWanted) {
    const auto document =
        RKTJSONSerialization::JSONObjectWithData(R"({"a":1,"b":2,"other":3,"c":4})");
    rkt::KeyTable keys;
    for (const std::string_view key : {"a", "b", "c"}) keys.add(key);
    int visited = 0;
    rkt::visitMembers(
        *document->root().dictionary(), keys,
        [](void* count, std::uint8_t, const RKTJSONValue&) {
            return ++*static_cast<int*>(count) < 2;
        },
        &visited);
    EXPECT_EQ(visited, 2);
}

TEST(KeyTable, TellsKeysOfOneLengthAndFirstByteApart) {
    rkt::KeyTable keys;
    for (const std::string_view key : {"has_wiki", "homepage", "has_pets"}) keys.add(key);
    EXPECT_EQ(keys.find("has_wiki"), 0);
    EXPECT_EQ(keys.find("homepage"), 1);
    EXPECT_EQ(keys.find("has_pets"), 2);
    EXPECT_EQ(keys.find("has_cats"), rkt::KeyTable::none);
    EXPECT_EQ(keys.find(std::string_view("homepage\0", 9)), rkt::KeyTable::none);
}

}  // namespace
