#include "KorvoGitService/RKTURL.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>

#include "tests/helpers/Corpus.h"
#include "tests/helpers/URLs.h"

namespace {

using namespace std::literals;
using rkt::tests::textOrNothing;
using testing::Eq;
using testing::Optional;

/// Where platform versions differ, and so may this.
const std::set<std::string> textsNotAgreedUpon{
    "U211",  // a bracket encoded in the host "[::1]x", which is none in either form
    "U217",  // one of two brackets encoded in the host "a[::1]", which is none in either form
};
const std::set<std::string> partsNotAgreedUpon{
    "U133",  // a query without the percent-encoding that its URL's text has
    "U147",  // a fragment without the percent-encoding that its URL's text has
    "U211",  // a "]" left in the host of "[::1]x"
    "U217",  // a host without its first letter in "a[::1]"
    "U233",  // an empty scheme in "://h"
};

TEST(RKTURL, TakesAndRefusesTheTextsOfTheCorpus) {
    for (const auto& line : rkt::tests::corpus("urls")) {
        SCOPED_TRACE(line["id"]);
        const auto text = line["url"].get<std::string>();
        const auto url = RKTURL::URLWithString(text);
        ASSERT_EQ(!url, line["nil"].get<bool>());
        if (!url || textsNotAgreedUpon.contains(line["id"])) continue;
        EXPECT_EQ(url->absoluteString(), textOrNothing(line["nsurl"]["absolute"]));
    }
}

TEST(RKTURL, HasThePartsOfTheCorpus) {
    for (const auto& line : rkt::tests::corpus("urls")) {
        SCOPED_TRACE(line["id"]);
        if (line["nil"] || partsNotAgreedUpon.contains(line["id"])) continue;
        const RKTURL url = URL(line["url"].get<std::string>());
        const auto& parts = line["nsurl"];
        EXPECT_EQ(url.scheme(), textOrNothing(parts["scheme"]));
        EXPECT_EQ(url.host(), textOrNothing(parts["host"]));
        EXPECT_EQ(url.user(), textOrNothing(parts["user"]));
        EXPECT_EQ(url.password(), textOrNothing(parts["password"]));
        EXPECT_EQ(url.path(), textOrNothing(parts["path"]).value_or(""));
        EXPECT_EQ(url.query(), textOrNothing(parts["query"]));
        EXPECT_EQ(url.fragment(), textOrNothing(parts["fragment"]));
        EXPECT_EQ(url.port().value_or(-1), parts["port"].is_null() ? -1 : parts["port"].get<int>());
    }
}

TEST(RKTURL, EncodesBracketsOutsideAnAddress) {
    EXPECT_EQ(URL("https://u[:p]@h]/a[b?x=[1]#[f]").absoluteString(),
              "https://u%5B:p%5D@h%5D/a%5Bb?x=%5B1%5D#%5Bf%5D");
    EXPECT_EQ(URL("[a]:b").absoluteString(), "%5Ba%5D:b");
    for (const auto* text :
         {"https://[::1]:8/x", "//u@[v1.x:y]", "https://[::1", "https://[::1]x/"}) {
        EXPECT_EQ(URL(text).absoluteString(), text);
    }
}

TEST(RKTURL, RefusesEveryCharacterThatAURLCannotHold) {
    const std::string_view marks = "-._~!$&'()*+,;=:@/?[]#";
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool valid = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= 'a' && byte <= 'z') || marks.find(c) != marks.npos;
        EXPECT_EQ(RKTURL::URLWithString("https://h/a"s + c + "b").has_value(), valid) << byte;
        EXPECT_EQ(RKTURL::URLWithString(std::string(1, c)).has_value(), valid) << byte;
    }
}

TEST(RKTURL, TakesAPercentSignOnlyBeforeTwoDigits) {
    for (const auto* text : {"%41", "https://h/%aF", "%00", "a%20"}) {
        EXPECT_TRUE(RKTURL::URLWithString(text)) << text;
    }
    for (const auto* text :
         {"%", "a%4", "%%41", "%4%41", "%#41", "https://h%/", "%1g", "%\xC3\xA9"}) {
        EXPECT_FALSE(RKTURL::URLWithString(text)) << text;
    }
}

TEST(RKTURL, TakesOneNumberSignOnly) {
    EXPECT_TRUE(RKTURL::URLWithString("a#"));
    EXPECT_FALSE(RKTURL::URLWithString("a##"));
    EXPECT_FALSE(RKTURL::URLWithString("#a#b"));
}

TEST(RKTURL, RefusesATextAfterANulCharacter) {
    EXPECT_FALSE(RKTURL::URLWithString("https://h/\0"sv));
}

TEST(RKTURL, DecodesUserHostAndPathOnly) {
    const RKTURL url = URL("https://u%40d:p%3Aw@h%6F/a%2Fb%20c?q%20r#f%20g");
    EXPECT_THAT(url.user(), Optional(Eq("u@d")));
    EXPECT_THAT(url.password(), Optional(Eq("p%3Aw")));
    EXPECT_THAT(url.host(), Optional(Eq("ho")));
    EXPECT_EQ(url.path(), "/a/b c");
    EXPECT_THAT(url.query(), Optional(Eq("q%20r")));
    EXPECT_THAT(url.fragment(), Optional(Eq("f%20g")));
}

TEST(RKTURL, GivesNothingForPartsThatAreNotUTF8) {
    const RKTURL url = URL("https://%FF@%FF/%FF");
    EXPECT_EQ(url.user(), std::nullopt);
    EXPECT_EQ(url.host(), std::nullopt);
    EXPECT_EQ(url.path(), "");
}

TEST(RKTURL, GivesAnIPv6HostWithItsZone) {
    EXPECT_THAT(URL("https://[fe80::1%25eth0]:8443/x").host(), Optional(Eq("fe80::1%eth0")));
    EXPECT_EQ(URL("https://[fe80::1%25eth0]:8443/x").port(), 8443);
    for (const std::string host : {"fe80::1%41", "fe80%3A%3A1", "fe80::1%3A2%25eth0"}) {
        EXPECT_THAT(URL("https://[" + host + "]/").host(), Optional(Eq(host)));  // and not decoded
    }
}

TEST(RKTURL, GivesAnIPv6HostWithoutBrackets) {
    const RKTURL url = URL("https://u:p@[2001:db8::1]:8443/x");
    EXPECT_THAT(url.host(), Optional(Eq("2001:db8::1")));
    EXPECT_THAT(url.port(), Optional(8443));
    EXPECT_THAT(url.password(), Optional(Eq("p")));
}

TEST(RKTURL, ReadsThePort) {
    EXPECT_THAT(URL("http://h:0").port(), Optional(0));
    EXPECT_THAT(URL("http://h:08080").port(), Optional(8080));
    EXPECT_THAT(URL("http://h:65536").port(), Optional(65536));
    EXPECT_THAT(URL("http://h:2147483648").port(), Optional(std::numeric_limits<int>::max()));
    for (const auto* text :
         {"http://h:", "http://h:-1", "http://h:+1", "http://h:80a", "http://h"}) {
        EXPECT_EQ(URL(text).port(), std::nullopt) << text;
    }
}

TEST(RKTURL, HasAHostOnlyAfterTwoSlashes) {
    EXPECT_EQ(URL("git.example.com/x").host(), std::nullopt);
    EXPECT_EQ(URL("git.example.com/x").path(), "git.example.com/x");
    EXPECT_THAT(URL("git.example.com:8080/x").scheme(), Optional(Eq("git.example.com")));
    EXPECT_EQ(URL("https:/h/x").host(), std::nullopt);
    EXPECT_THAT(URL("//host/x").host(), Optional(Eq("host")));
    EXPECT_EQ(URL("//host/x").scheme(), std::nullopt);
}

TEST(RKTURL, HasOnlyASchemeWhereNoSlashFollowsIt) {
    const RKTURL url = URL("mailto:a@b?subject=x#y");
    EXPECT_THAT(url.scheme(), Optional(Eq("mailto")));
    EXPECT_EQ(url.path(), "");
    EXPECT_EQ(url.query(), std::nullopt);
    EXPECT_EQ(url.fragment(), std::nullopt);
}

TEST(RKTURL, TellsAnEmptyQueryFromNone) {
    EXPECT_THAT(URL("https://h?").query(), Optional(Eq("")));
    EXPECT_THAT(URL("https://h#").fragment(), Optional(Eq("")));
    EXPECT_EQ(URL("https://h#?a").query(), std::nullopt);
    EXPECT_THAT(URL("https://h?a/b@c:d").query(), Optional(Eq("a/b@c:d")));
}

TEST(RKTURL, TakesOneSlashFromThePathsEnd) {
    EXPECT_EQ(URL("https://h/").path(), "/");
    EXPECT_EQ(URL("https://h//").path(), "/");
    EXPECT_EQ(URL("https://h/a/").path(), "/a");
    EXPECT_EQ(URL("https://h/a//").path(), "/a/");
}

TEST(RKTURL, ComparesTheTexts) {
    EXPECT_EQ(URL("https://h/"), URL("https://h/"));
    EXPECT_NE(URL("https://h/"), URL("https://h"));
    EXPECT_NE(URL("https://h/%2f"), URL("https://h/%2F"));
    EXPECT_EQ(std::hash<RKTURL>()(URL("https://h/")), std::hash<RKTURL>()(URL("https://h/")));
}

}  // namespace
