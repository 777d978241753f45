#include "core/LinkHeader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/helpers/Corpus.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Relations = std::map<std::string, std::string>;

Relations relations(std::string_view header) {
    Relations texts;
    for (const auto& [name, url] : rkt::linkRelationsInHeader(header)) {
        texts.emplace(name, url.absoluteString());
    }
    return texts;
}

TEST(LinkHeader, IsReadAsServicesWriteIt) {
    EXPECT_THAT(relations("<https://api.github.com/user/repos?page=2&per_page=10>; rel=\"next\", "
                          "<https://api.github.com/user/repos?page=5&per_page=10>; rel=\"last\""),
                ElementsAre(Pair("last", "https://api.github.com/user/repos?page=5&per_page=10"),
                            Pair("next", "https://api.github.com/user/repos?page=2&per_page=10")));
}

TEST(LinkHeader, MayBeBlank) {
    EXPECT_THAT(relations(""), IsEmpty());
    EXPECT_THAT(relations(" \t "), IsEmpty());
}

TEST(LinkHeader, MayEndWithAnUnquotedName) {
    EXPECT_THAT(relations("<https://h/1>; rel=\"next\", <https://h/2>; rel=last"),
                ElementsAre(Pair("last", "https://h/2"), Pair("next", "https://h/1")));
    EXPECT_THAT(relations("<https://h/1>; rel=next; title=\"x\""),
                ElementsAre(Pair("next; title=\"x\"", "https://h/1")));
}

TEST(LinkHeader, IsReadUpToAMissingComma) {
    EXPECT_THAT(relations("<https://h/1>; rel=\"next\" <https://h/2>; rel=\"last\""),
                ElementsAre(Pair("next", "https://h/1")));
}

TEST(LinkHeader, IsNotReadFromALinkWhoseFirstParameterIsAnother) {
    EXPECT_THAT(relations("<https://h/1>; type=\"text/html\"; rel=\"next\""), IsEmpty());
    EXPECT_THAT(relations("<https://h/1>; rel=next, <https://h/2>; title=x; rel=last"),
                ElementsAre(Pair("next", "https://h/1")));
}

TEST(LinkHeader, AcceptsTheParameterInCapitals) {
    EXPECT_THAT(relations("<https://h/1>; REL=\"next\""), ElementsAre(Pair("next", "https://h/1")));
}

TEST(LinkHeader, KeepsNamesAsTheyStand) {
    EXPECT_THAT(relations("<https://h/1>; rel=\"next last\""),
                ElementsAre(Pair("next last", "https://h/1")));
    EXPECT_THAT(relations("<https://h/1>; rel=\"next\", <https://h/2>; rel=\"NEXT\""),
                ElementsAre(Pair("NEXT", "https://h/2"), Pair("next", "https://h/1")));
}

TEST(LinkHeader, AcceptsNamesInApostrophes) {
    EXPECT_THAT(relations("<https://h/1>; rel='next', <https://h/2>; rel='it\"s'"),
                ElementsAre(Pair("it\"s", "https://h/2"), Pair("next", "https://h/1")));
}

TEST(LinkHeader, StopsAtAnEmptyName) {
    for (const char* name : {"\"\"", "''", "\"  \"", "", ","}) {
        EXPECT_THAT(
            relations(std::string("<https://h/1>; rel=") + name + ", <https://h/2>; rel=\"last\""),
            testing::Not(testing::Contains(Pair("last", "https://h/2"))))
            << name;
    }
}

TEST(LinkHeader, NamesTheRestByAnUnterminatedQuote) {
    EXPECT_THAT(relations("<https://h/1>; rel=\"next, and so on"),
                ElementsAre(Pair("next, and so on", "https://h/1")));
}

TEST(LinkHeader, PrefersTheLaterOfTwoLinksWithOneName) {
    EXPECT_THAT(relations("<https://h/1>; rel=\"next\", <https://h/2>; rel=\"next\""),
                ElementsAre(Pair("next", "https://h/2")));
}

TEST(LinkHeader, DropsANameWhoseTargetIsNoURL) {
    EXPECT_THAT(relations("<https://h/1>; rel=\"next\", <no URL>; rel=\"next\", "
                          "<https://h/3>; rel=\"last\""),
                ElementsAre(Pair("last", "https://h/3")));
}

TEST(LinkHeader, KeepsRelativeTargets) {
    EXPECT_THAT(relations("</repos?page=2>; rel=\"next\""),
                ElementsAre(Pair("next", "/repos?page=2")));
}

TEST(LinkHeader, HoldsOnlyTheFirstLinksOfMany) {
    std::string header;
    for (int link = 0; link < 5000; ++link) {
        header += "<https://h/>; rel=\"" + std::to_string(link) + "\",";
    }
    const auto read = relations(header);
    EXPECT_EQ(read.size(), rkt::maximumLinkCount);
    EXPECT_TRUE(read.contains("999"));
    EXPECT_FALSE(read.contains("1000"));
}

TEST(LinkHeader, IsReadAsTheCorpusSays) {
    for (const auto& example : rkt::tests::corpus("links")) {
        if (example.at("header").is_null()) continue;
        EXPECT_EQ(relations(example.at("header").get<std::string>()),
                  example.at("relations").get<Relations>())
            << example.dump();
    }
}

}  // namespace
