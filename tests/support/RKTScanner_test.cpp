#include "KorvoGitService/RKTScanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/helpers/Corpus.h"

namespace {

using namespace std::literals;
using testing::Eq;
using testing::Optional;

TEST(RKTScanner, SkipsWhiteSpaceOfEveryKind) {
    for (const auto* space :
         {"\t",     "\n",     "\v",     "\f",     "\r",     " ",      "\u0085", "\u00A0", "\u1680",
          "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
          "\u2009", "\u200A", "\u200B", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"}) {
        const std::string text = space + "x"s + space + space;
        RKTScanner scanner(text);
        EXPECT_FALSE(scanner.isAtEnd());
        EXPECT_TRUE(scanner.scanString("x")) << testing::PrintToString(text);
        EXPECT_TRUE(scanner.isAtEnd()) << testing::PrintToString(text);
    }
}

TEST(RKTScanner, SkipsNothingElse) {
    for (const auto& other :
         {"\0"s, "\b"s, "\x0E"s, "\x1F"s, "\x7F"s, "\u0084"s, "\u180E"s, "\u200C"s, "\u202A"s,
          "\u2060"s, "\uFEFF"s, "\x85"s, "\xC2"s, "\xE2\x80"s}) {
        const std::string text = other + "x";
        EXPECT_FALSE(RKTScanner(text).scanString("x")) << testing::PrintToString(text);
        EXPECT_FALSE(RKTScanner(other).isAtEnd()) << testing::PrintToString(text);
    }
}

TEST(RKTScanner, IsAtTheEndOfAnEmptyText) {
    EXPECT_TRUE(RKTScanner("").isAtEnd());
    EXPECT_FALSE(RKTScanner("").scanString("x"));
    EXPECT_FALSE(RKTScanner("").scanString(""));
    EXPECT_EQ(RKTScanner("").scanUpToString("x"), std::nullopt);
}

TEST(RKTScanner, ScansALiteralWithoutRegardToCase) {
    RKTScanner scanner("ReL=\"next");
    EXPECT_TRUE(scanner.scanString("rel="));
    EXPECT_TRUE(scanner.scanString("\""));
    EXPECT_FALSE(scanner.scanString("NEXT\""));
    EXPECT_TRUE(scanner.scanString("NEXT"));
    EXPECT_TRUE(scanner.isAtEnd());
}

TEST(RKTScanner, ComparesMarksExactly) {
    // Each pair differs in the bit that tells a capital from a small letter.
    EXPECT_FALSE(RKTScanner("[").scanString("{"));
    EXPECT_FALSE(RKTScanner("@").scanString("`"));
}

TEST(RKTScanner, StaysWhereItIsWhenAScanFails) {
    RKTScanner scanner("a  <b");
    EXPECT_TRUE(scanner.scanString("a"));
    EXPECT_FALSE(scanner.scanString(">"));
    EXPECT_EQ(scanner.scanUpToString("<"), std::nullopt);
    EXPECT_THAT(scanner.scanUpToString("b"), Optional(Eq("<")));
}

TEST(RKTScanner, ScansUpToAText) {
    RKTScanner scanner("  a b  ;c");
    EXPECT_THAT(scanner.scanUpToString(";"), Optional(Eq("a b  ")));
    EXPECT_EQ(scanner.scanUpToString(";"), std::nullopt);
    EXPECT_TRUE(scanner.scanString(";"));
    EXPECT_THAT(scanner.scanUpToString(";"), Optional(Eq("c")));
    EXPECT_TRUE(scanner.isAtEnd());
}

TEST(RKTScanner, ScansToTheEndWhenTheTextDoesNotCome) {
    RKTScanner scanner(" a b ");
    EXPECT_THAT(scanner.scanUpToString(">"), Optional(Eq("a b ")));
    EXPECT_EQ(scanner.scanUpToString(">"), std::nullopt);
    EXPECT_TRUE(scanner.isAtEnd());
}

TEST(RKTScanner, ScansNothingFromWhiteSpaceAlone) {
    RKTScanner scanner(" \t\u00A0");
    EXPECT_EQ(scanner.scanUpToString(">"), std::nullopt);
}

TEST(RKTScanner, FindsALongerStopInAnyCase) {
    RKTScanner scanner("a RE rel=");
    EXPECT_THAT(scanner.scanUpToString("REL"), Optional(Eq("a RE ")));
    EXPECT_TRUE(scanner.scanString("rel="));
}

using NameAndTarget = std::pair<std::string, std::string>;

/// The names and targets of a `Link` header (RFC 8288), as far as the scanner gets.
std::vector<NameAndTarget> linksOf(std::string_view header) {
    std::vector<NameAndTarget> links;
    RKTScanner scanner(header);
    while (scanner.scanString("<")) {
        const auto target = scanner.scanUpToString(">");
        if (!target || !scanner.scanString(">") || !scanner.scanString(";")) break;
        if (!scanner.scanString("rel=")) break;
        std::string_view stop = ",";
        for (const std::string_view quote : {"\"", "'"}) {
            if (stop == "," && scanner.scanString(quote)) stop = quote;
        }
        const auto name = scanner.scanUpToString(stop);
        if (!name) break;
        links.emplace_back(*name, *target);
        if (stop != ",") scanner.scanString(stop);
        if (!scanner.scanString(",")) break;
    }
    return links;
}

TEST(RKTScanner, ReadsTheLinkHeadersOfTheCorpus) {
    for (const auto& line : rkt::tests::corpus("links")) {
        SCOPED_TRACE(line["id"]);
        if (line["header"].is_null()) continue;
        EXPECT_EQ(linksOf(line["header"].get<std::string>()),
                  line["pairs"].get<std::vector<NameAndTarget>>());
    }
}

}  // namespace
