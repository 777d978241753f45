#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/RKTURLComponents.h"
#include "tests/helpers/Corpus.h"
#include "tests/helpers/URLs.h"

namespace {

using rkt::tests::textOrNothing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;

using Items = std::vector<RKTURLQueryItem>;

std::optional<Items> itemsOf(std::string_view text) {
    return RKTURLComponents::componentsWithURL(URL(text)).value().queryItems();
}

Items itemsFrom(const nlohmann::json& pairs) {
    Items items;
    for (const auto& pair : pairs) {
        items.push_back({pair[0].get<std::string>(), textOrNothing(pair[1])});
    }
    return items;
}

TEST(RKTURLQueryItem, IsReadAsTheCorpusSays) {
    for (const auto& line : rkt::tests::corpus("queries")) {
        SCOPED_TRACE(line["id"]);
        if (line["kind"] != "read") continue;
        const auto text = line["url"].get<std::string>();
        ASSERT_EQ(!RKTURL::URLWithString(text), line["url_nil"].get<bool>());
        if (line["url_nil"]) continue;
        EXPECT_EQ(itemsOf(text).value(), itemsFrom(line["items"]));
        const std::map<std::string, std::string, std::less<>> dictionary = line["dictionary"];
        EXPECT_EQ(kc_queryParameters(URL(text)), dictionary);
    }
}

TEST(RKTURLQueryItem, IsWrittenAsTheCorpusSays) {
    for (const auto& line : rkt::tests::corpus("queries")) {
        SCOPED_TRACE(line["id"]);
        if (line["kind"] != "write") continue;
        auto components =
            RKTURLComponents::componentsWithURL(URL("https://api.example.com/p?old=1")).value();
        components.setQueryItems(itemsFrom(line["items"]));
        EXPECT_EQ(components.percentEncodedQuery(), line["encoded"].get<std::string>());
        EXPECT_EQ(components.URL().value().absoluteString(), textOrNothing(line["url"]));
    }
}

TEST(RKTURLQueryItem, ReadsBackAsItWasWritten) {
    const Items items{{"a", "1"}, {"", "x"},
                      {"a", ""},  {"n=&%#[]", "v=&%#[] +"},
                      {"b", {}},  {"\u00e9", "\u4e2d"},
                      {"", {}},   {"c", std::string(1, '\0')}};
    RKTURLComponents components;
    components.setQueryItems(items);
    const auto url = components.URL().value();
    EXPECT_EQ(itemsOf(url.absoluteString()), items);
}

TEST(RKTURLQueryItem, IsLackingWithoutAQuery) {
    EXPECT_EQ(itemsOf("https://h/p"), std::nullopt);
    EXPECT_THAT(itemsOf("https://h/p?"), Optional(IsEmpty()));
    RKTURLComponents components;
    components.setQueryItems(Items{{"a", "1"}});
    components.setQueryItems(std::nullopt);
    EXPECT_EQ(components.percentEncodedQuery(), std::nullopt);
}

TEST(RKTURLQueryItem, HasAnEmptyNameWhereTheNameIsNotUTF8) {
    EXPECT_THAT(itemsOf("https://h/p?%FF=1&%FF"),
                Optional(ElementsAre(RKTURLQueryItem{"", "1"}, RKTURLQueryItem{"", {}})));
}

TEST(RKTURLQueryItem, KeepsAPlusSign) {
    EXPECT_THAT(itemsOf("https://h/p?a+b=c+d%2B"),
                Optional(ElementsAre(RKTURLQueryItem{"a+b", "c+d+"})));
}

TEST(kc_queryParameters, TakesTheLastOfAName) {
    EXPECT_THAT(kc_queryParameters(URL("https://h/p?a=1&b=2&a=3")),
                ElementsAre(Pair("a", "3"), Pair("b", "2")));
}

TEST(kc_queryParameters, ForgetsANameThatComesWithoutValue) {
    EXPECT_THAT(kc_queryParameters(URL("https://h/p?a=1&b=2&a")), ElementsAre(Pair("b", "2")));
    EXPECT_THAT(kc_queryParameters(URL("https://h/p?a=1&a=%FF")), IsEmpty());
    EXPECT_THAT(kc_queryParameters(URL("https://h/p?a&a=1")), ElementsAre(Pair("a", "1")));
}

TEST(kc_queryParameters, IsEmptyWithoutQueryOrComponents) {
    EXPECT_THAT(kc_queryParameters(URL("https://h/p")), IsEmpty());
    EXPECT_THAT(kc_queryParameters(URL("https://h:80a/p?a=1")), IsEmpty());
}

TEST(kc_queryParameters, ReadsARelativeURL) {
    EXPECT_THAT(kc_queryParameters(URL("?page=7#f")), ElementsAre(Pair("page", "7")));
}

}  // namespace
