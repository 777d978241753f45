// Properties that hold for every text, checked on many that are made from a fixed seed.

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <string_view>
#include <tuple>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/KorvoGit.h"
#include "KorvoGitService/RKTScanner.h"
#include "KorvoGitService/RKTURLComponents.h"
#include "support/Percent.h"
#include "support/RequestTarget.h"

namespace {

class TextMaker {
public:
    /// Pieces that a URL's grammar gives a meaning, in any order.
    std::string URLLikeText() {
        static constexpr std::array<std::string_view, 40> pieces{
            ":",      "/",     "//",
            "@",      "?",     "#",
            "[",      "]",     "%",
            "%41",    "%ff",   "&",
            "=",      ";",     "+",
            ".",      "..",    "a",
            "B",      "1",     "80",
            "65536",  "h",     "u",
            "https",  "http",  "file",
            "ssh",    "[::1]", "::1",
            "[v1.x]", "git@",  "host",
            "%5B",    "%2F",   "-",
            "~",      "_",     "99999999999999999999",
            "://"};
        std::string text;
        for (auto left = random_() % 12; left > 0; --left)
            text += pieces[random_() % pieces.size()];
        return text;
    }

    std::string bytes() {
        std::string text(random_() % 30, '\0');
        for (char& c : text) c = static_cast<char>(random_() % 256);
        return text;
    }

    /// UTF-8 of any characters that need care in a URL.
    std::string plainText() {
        static constexpr std::array<std::string_view, 24> pieces{
            "/", ":",  "@", "?", "#", "[", "]",  "%",  "%41",    "&",      "=",   ";",
            " ", "\"", "a", "b", "1", ".", "..", "//", "\u00e9", "\u4e2d", "::1", "\n"};
        std::string text;
        for (auto left = random_() % 8; left > 0; --left) text += pieces[random_() % pieces.size()];
        return text;
    }

    bool perhaps() { return random_() % 2 == 0; }

    std::optional<std::int64_t> port() {
        if (perhaps()) return std::nullopt;
        return static_cast<std::int64_t>(random_() % 70000) - 100;
    }

private:
    std::mt19937 random_{20240602};
};

auto decodedParts(const RKTURLComponents& c) {
    return std::tuple(c.scheme(), c.user(), c.password(), c.host(), c.port(), c.path(),
                      c.percentEncodedQuery(), c.percentEncodedFragment());
}

RKTURLComponents readBack(const RKTURLComponents& components) {
    return RKTURLComponents::componentsWithURL(components.URL().value()).value();
}

TEST(URLRoundTrip, ComponentsOfAURLMakeAURLWithTheSameComponents) {
    TextMaker maker;
    int read = 0;
    for (int round = 0; round < 50000; ++round) {
        const auto url = RKTURL::URLWithString(maker.URLLikeText());
        const auto components = url ? RKTURLComponents::componentsWithURL(*url) : std::nullopt;
        if (!components) continue;
        ++read;
        SCOPED_TRACE(url->absoluteString());
        ASSERT_TRUE(components->URL());
        const RKTURLComponents again = readBack(*components);
        ASSERT_EQ(decodedParts(again), decodedParts(*components));
        ASSERT_EQ(again.percentEncodedPath(), components->percentEncodedPath());
        ASSERT_EQ(again.URL(), components->URL());
    }
    EXPECT_GT(read, 10000);
}

TEST(URLRoundTrip, ComponentsThatWereSetReadBackOrMakeNoURL) {
    TextMaker maker;
    int made = 0;
    for (int round = 0; round < 50000; ++round) {
        const auto base = RKTURL::URLWithString(maker.perhaps() ? "https://u:p@h:1/x?y#z" : "?y");
        auto components = RKTURLComponents::componentsWithURL(base.value()).value();
        if (maker.perhaps()) components.setScheme(maker.perhaps() ? "ssh" : maker.plainText());
        if (maker.perhaps()) components.setScheme(std::nullopt);
        if (maker.perhaps()) components.setHost(maker.plainText());
        if (maker.perhaps()) components.setHost(std::nullopt);
        if (maker.perhaps()) components.setPort(maker.port());
        if (maker.perhaps()) components.setPath((maker.perhaps() ? "/" : "") + maker.plainText());
        if (maker.perhaps()) components.setQueryItems({{{maker.plainText(), maker.plainText()}}});
        if (!components.URL()) continue;
        ++made;
        SCOPED_TRACE(components.URL()->absoluteString());
        const RKTURLComponents again = readBack(components);
        ASSERT_EQ(decodedParts(again), decodedParts(components));
        ASSERT_EQ(again.queryItems(), components.queryItems());
    }
    EXPECT_GT(made, 5000);
}

TEST(URLRoundTrip, NoBytesMakeAnythingThrow) {
    TextMaker maker;
    for (int round = 0; round < 50000; ++round) {
        const std::string text = maker.perhaps() ? maker.bytes() : maker.URLLikeText();
        const auto url = RKTURL::URLWithString(text);
        if (url) {
            EXPECT_NO_THROW(std::ignore = std::tuple(url->scheme(), url->host(), url->port(),
                                                     url->user(), url->password(), url->path(),
                                                     url->query(), url->fragment()));
            EXPECT_NO_THROW(std::ignore = kc_queryParameters(*url));
            EXPECT_NO_THROW(std::ignore = rkt::failingURLString(*url));
            EXPECT_NO_THROW(std::ignore = rkt::requestTarget(url));
        }
        EXPECT_NO_THROW(std::ignore = rkt_URLWithString(text));
        RKTURLComponents components;
        EXPECT_NO_THROW(components.setHost(text));
        EXPECT_NO_THROW(components.setPath(text));
        RKTScanner scanner(text);
        EXPECT_NO_THROW(std::ignore = scanner.scanUpToString("%"));
        EXPECT_NO_THROW(std::ignore = scanner.scanString("%"));
    }
}

TEST(URLRoundTrip, LongTextsAreReadWithoutDeepRecursion) {
    const std::string letters(2'000'000, 'a');
    const std::string digits(2'000'000, '1');
    for (const std::string& authority :
         {letters, letters + "@h", "h:" + digits, "[v1." + letters + "]"}) {
        const auto url = RKTURL::URLWithString("https://" + authority + "/" + letters).value();
        const auto components = RKTURLComponents::componentsWithURL(url);
        ASSERT_TRUE(components);
        EXPECT_EQ(components->URL(), url);
    }
}

}  // namespace
