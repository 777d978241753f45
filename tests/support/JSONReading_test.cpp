#include "support/JSONReading.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Keys = std::vector<std::string>;

Keys keysThatPass(const std::string& text, std::initializer_list<const char*> wanted) {
    const auto document = RKTJSONSerialization::JSONObjectWithData(text);
    rkt::KeySieve sieve;
    for (const auto* key : wanted) sieve.add(key);
    Keys keys;
    rkt::visitMembers(
        *document->root().dictionary(), sieve,
        [](void* context, std::string_view key, const RKTJSONValue&) {
            static_cast<Keys*>(context)->emplace_back(key);
        },
        &keys);
    return keys;
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

TEST(JSONReading, AMemberOfInterestAlwaysPassesTheSieve) {
    const std::string longKey(300, 'k');
    EXPECT_EQ(
        keysThatPass(R"({"id":1,"":2,")" + longKey + R"(":3,"id":4})", {"id", "", longKey.c_str()}),
        (Keys{"id", "", longKey, "id"}));
}

TEST(JSONReading, AnEmptySieveLetsNothingPass) {
    EXPECT_TRUE(keysThatPass(R"({"id":1,"name":2,"":3})", {}).empty());
}

}  // namespace
