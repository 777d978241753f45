#include "KorvoGitService/RKTURLComponents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/helpers/Corpus.h"
#include "tests/helpers/URLs.h"

namespace {

using rkt::tests::textOrNothing;
using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Optional;

RKTURLComponents componentsOf(std::string_view text) {
    return RKTURLComponents::componentsWithURL(RKTURL::URLWithString(text).value()).value();
}

std::string textOf(const RKTURLComponents& components) {
    const auto url = components.URL();
    return url ? url->absoluteString() : "no URL";
}

TEST(RKTURLComponents, AreThoseOfTheCorpus) {
    for (const auto& line : rkt::tests::corpus("urls")) {
        SCOPED_TRACE(line["id"]);
        if (line["nil"]) continue;
        const auto url = RKTURL::URLWithString(line["url"].get<std::string>());
        const auto components = RKTURLComponents::componentsWithURL(url.value());
        ASSERT_EQ(!components, line["components_nil"].get<bool>());
        if (!components) continue;
        const auto& parts = line["components"];
        EXPECT_EQ(components->scheme(), textOrNothing(parts["scheme"]));
        EXPECT_EQ(components->user(), textOrNothing(parts["user"]));
        EXPECT_EQ(components->password(), textOrNothing(parts["password"]));
        EXPECT_EQ(components->host(), textOrNothing(parts["host"]));
        EXPECT_EQ(components->port().value_or(-1),
                  parts["port"].is_null() ? -1 : parts["port"].get<std::int64_t>());
        EXPECT_EQ(components->path(), textOrNothing(parts["path"]));
        EXPECT_EQ(components->percentEncodedPath(), textOrNothing(parts["pct_path"]));
        EXPECT_EQ(components->percentEncodedQuery(), textOrNothing(parts["query"]));
        EXPECT_EQ(components->percentEncodedFragment(), textOrNothing(parts["fragment"]));
    }
}

TEST(RKTURLComponents, AreImpossibleWithoutAnAuthoritysStructure) {
    for (const auto* text : {"https://host:80a", "https://host:-1", "https://a@b@c/",
                             "https://[::1", "https://[::1]x/", "https://[]", "https://[::g]/",
                             "https://[1.2.3.4]/", "https://::1", "https://a:b:c@d"}) {
        const auto url = RKTURL::URLWithString(text).value();
        EXPECT_FALSE(RKTURLComponents::componentsWithURL(url)) << text;
    }
}

TEST(RKTURLComponents, KeepTheBracketsOfAnIPv6Host) {
    RKTURLComponents components = componentsOf("https://[2001:db8::1]:8443/x");
    EXPECT_THAT(components.host(), Optional(Eq("[2001:db8::1]")));
    components.setPath("/api/v4/user");
    EXPECT_EQ(textOf(components), "https://[2001:db8::1]:8443/api/v4/user");
}

TEST(RKTURLComponents, PutAnIPv6HostIntoBrackets) {
    RKTURLComponents components = componentsOf("https://h/x");
    components.setHost(RKTURL::URLWithString("http://[::1]/")->host());
    EXPECT_EQ(textOf(components), "https://[::1]/x");
    components.setHost("[::2]");
    EXPECT_EQ(textOf(components), "https://[::2]/x");
}

// RFC 6874: where link-local addresses are, an interface must be named.
TEST(RKTURLComponents, KeepTheZoneOfAnIPv6Host) {
    RKTURLComponents components = componentsOf("https://u@[fe80::1%25eth0]:8443/x");
    EXPECT_THAT(components.host(), Optional(Eq("[fe80::1%eth0]")));
    EXPECT_EQ(components.port(), 8443);
    components.setPath("/api/v4/user");
    EXPECT_EQ(textOf(components), "https://u@[fe80::1%25eth0]:8443/api/v4/user");
    EXPECT_THAT(componentsOf("https://[fe80::1%25br%2D1%3a2]").host(),
                Optional(Eq("[fe80::1%br-1:2]")));
}

TEST(RKTURLComponents, WriteTheZoneOfAnIPv6HostThatIsSet) {
    RKTURLComponents components = componentsOf("https://h/x");
    components.setHost(RKTURL::URLWithString("http://[fe80::1%25eth0]/")->host());
    EXPECT_EQ(textOf(components), "https://[fe80::1%25eth0]/x");
    for (const std::string zone : {"eth0", "br-1:2", "25", "a]b/@\u00e9"}) {
        components.setHost("[fe80::1%" + zone + "]");
        EXPECT_TRUE(textOf(components).starts_with("https://[fe80::1%25")) << textOf(components);
        EXPECT_THAT(componentsOf(textOf(components)).host(),
                    Optional(Eq("[fe80::1%" + zone + "]")));
    }
}

TEST(RKTURLComponents, AreImpossibleWithAZoneThatIsNoneOrWithoutAnAddress) {
    for (const auto* text :
         {"https://[fe80::1%25]/", "https://[fe80::1%41]/", "https://[fe80::1%25a:b]/",
          "https://[fe80::1%25%FF]/", "https://[%25eth0]/", "https://[v1.x%25eth0]/",
          "https://[1.2.3.4%25eth0]/", "https://[fe80::1%25eth0", "https://[fe80::1]%25eth0/",
          "https://[fe80::1]%25eth0]/", "https://[fe80::1%25a]@h/"}) {
        EXPECT_FALSE(RKTURLComponents::componentsWithURL(URL(text))) << text;
    }
}

// Within brackets these are addresses of versions of IP to come (RFC 3986 section 3.2.2).
TEST(RKTURLComponents, TakeAHostWithoutAColonForAName) {
    RKTURLComponents components = componentsOf("https://h/x");
    for (const std::string name : {"v1.example.com", "vc.example.com", "VF.x"}) {
        components.setHost(name);
        EXPECT_EQ(textOf(components), "https://" + name + "/x");
    }
    components.setHost("[v1.x]");
    EXPECT_EQ(textOf(components), "https://[v1.x]/x");
}

TEST(RKTURLComponents, EncodeAHostThatIsNoAddress) {
    RKTURLComponents components = componentsOf("https://h/x");
    components.setHost("[::1");
    EXPECT_EQ(textOf(components), "https://%5B%3A%3A1/x");
    components.setHost("a/b?c#d@e:1");
    EXPECT_EQ(textOf(components), "https://a%2Fb%3Fc%23d%40e%3A1/x");
    EXPECT_THAT(components.host(), Optional(Eq("a/b?c#d@e:1")));
    components.setHost("[::1]/]");
    EXPECT_EQ(textOf(components), "https://%5B%3A%3A1%5D%2F%5D/x");
}

TEST(RKTURLComponents, KeepEverythingButThePathThatIsSet) {
    RKTURLComponents components = componentsOf("HTTPS://u%40d:p@GHE.Example:8443/old/x?a=1#f");
    components.setPath("/api/v3/user");
    EXPECT_EQ(textOf(components), "HTTPS://u%40d:p@GHE.Example:8443/api/v3/user?a=1#f");
}

TEST(RKTURLComponents, GiveBackTheTextTheyWereReadFrom) {
    for (const auto* text : {"",
                             "/",
                             "//",
                             "////x",
                             "x:",
                             "x:/y",
                             "http://",
                             "http:///x",
                             "#",
                             "?",
                             "https://@h",
                             "https://u:@h/",
                             "https://:p@h/",
                             "mailto:a@b?c#d",
                             "10.0.0.1:8080/x",
                             "git@host:x",
                             "://h",
                             "https://h/%2f%FF?%ff#%fe",
                             "http://h/../x//y/.",
                             "https://[v1.x:y]/",
                             "https://u%3a@h%41/"}) {
        EXPECT_EQ(textOf(componentsOf(text)), text);
    }
}

TEST(RKTURLComponents, EncodeASemicolonInThePathThatTheyRead) {
    EXPECT_EQ(textOf(componentsOf("https://u;@h;/a;b?c;d#e;f")), "https://u;@h;/a%3Bb?c;d#e;f");
}

TEST(RKTURLComponents, ReadAPortAsANumber) {
    EXPECT_THAT(componentsOf("http://h:08080/").port(), Optional(8080));
    EXPECT_EQ(textOf(componentsOf("http://h:08080/")), "http://h:8080/");
    EXPECT_THAT(componentsOf("http://h:000/").port(), Optional(0));
    EXPECT_THAT(componentsOf("http://h:65536/").port(), Optional(65536));
    EXPECT_EQ(componentsOf("http://h:/").port(), std::nullopt);
    EXPECT_EQ(textOf(componentsOf("http://h:/")), "http://h/");
}

TEST(RKTURLComponents, NeverDropAPortThatIsTooLargeForANumber) {
    const RKTURLComponents components = componentsOf("http://h:99999999999999999999/");
    EXPECT_EQ(components.port(), std::nullopt);
    EXPECT_EQ(textOf(components), "http://h:99999999999999999999/");
}

TEST(RKTURLComponents, SetAndRemoveAPort) {
    RKTURLComponents components = componentsOf("http://h:1/");
    components.setPort(std::nullopt);
    EXPECT_EQ(textOf(components), "http://h/");
    components.setPort(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(textOf(components), "http://h:9223372036854775807/");
    components.setPort(-1);
    EXPECT_EQ(components.URL(), std::nullopt);
}

TEST(RKTURLComponents, EncodeThePathOfEachUserNameInTheCorpus) {
    for (const auto& line : rkt::tests::corpus("user_paths")) {
        SCOPED_TRACE(line["id"]);
        const auto path = RKTStringByAppendingPathComponent(
            "/rest/api/1.0", "/users/" + line["user"].get<std::string>());
        EXPECT_EQ(path, textOrNothing(line["path"]));
        RKTURLComponents components = componentsOf("https://h.example/old");
        components.setPath(path);
        EXPECT_EQ(components.path(), textOrNothing(line["path"]));
        EXPECT_EQ(components.percentEncodedPath(), textOrNothing(line["pct_path"]));
        EXPECT_EQ(textOf(components), textOrNothing(line["url"]));
    }
}

TEST(RKTURLComponents, JoinThePathsOfTheCorpus) {
    for (const auto& line : rkt::tests::corpus("paths")) {
        SCOPED_TRACE(line["id"]);
        const auto joined = RKTStringByAppendingPathComponent(line["base"].get<std::string>(),
                                                              line["component"].get<std::string>());
        EXPECT_EQ(joined, textOrNothing(line["joined"]));
        RKTURLComponents components;
        components.setPath(joined);
        EXPECT_EQ(components.percentEncodedPath(), textOrNothing(line["pct_path"]));
    }
}

TEST(RKTURLComponents, JoinPathsWithOneSlash) {
    EXPECT_EQ(RKTStringByAppendingPathComponent("", ""), "");
    EXPECT_EQ(RKTStringByAppendingPathComponent("", "/"), "/");
    EXPECT_EQ(RKTStringByAppendingPathComponent("", "/a"), "/a");
    EXPECT_EQ(RKTStringByAppendingPathComponent("a", ""), "a");
    EXPECT_EQ(RKTStringByAppendingPathComponent("//a///b//", "///"), "/a/b");
    EXPECT_EQ(RKTStringByAppendingPathComponent("/rest/api/1.0", "/users/"), "/rest/api/1.0/users");
}

TEST(RKTURLComponents, TakeAPathLiterally) {
    RKTURLComponents components;
    components.setPath("/%41?#[a;b=c,d]/../.");
    EXPECT_EQ(components.percentEncodedPath(), "/%2541%3F%23%5Ba;b=c,d%5D/../.");
    EXPECT_EQ(components.path(), "/%41?#[a;b=c,d]/../.");
    components.setPath("a:b/c:d");
    EXPECT_EQ(components.percentEncodedPath(), "a%3Ab/c:d");
}

TEST(RKTURLComponents, MakeNoURLOfPartsThatWouldReadAsOthers) {
    RKTURLComponents pathAsHost;
    pathAsHost.setPath("//h/x");
    EXPECT_EQ(pathAsHost.URL(), std::nullopt);

    RKTURLComponents relativePathAfterHost = componentsOf("https://h");
    relativePathAfterHost.setPath("x");
    EXPECT_EQ(relativePathAfterHost.URL(), std::nullopt);

    RKTURLComponents pathAsScheme = componentsOf("urn:isbn:1");
    pathAsScheme.setScheme(std::nullopt);
    EXPECT_EQ(pathAsScheme.URL(), std::nullopt);

    RKTURLComponents portWithoutHost;
    portWithoutHost.setPort(80);
    EXPECT_EQ(portWithoutHost.URL(), std::nullopt);

    RKTURLComponents userWithoutHost = componentsOf("https://u@h/");
    userWithoutHost.setHost(std::nullopt);
    EXPECT_EQ(userWithoutHost.URL(), std::nullopt);
}

TEST(RKTURLComponents, MakeNoURLWithAMalformedScheme) {
    RKTURLComponents components = componentsOf("https://h/");
    for (const auto* scheme : {"", "1a", "a b", "a/b", "a:", "-a", "\u00e9"}) {
        components.setScheme(scheme);
        EXPECT_EQ(components.URL(), std::nullopt) << scheme;
    }
    components.setScheme("git+ssh");
    EXPECT_EQ(textOf(components), "git+ssh://h/");
}

TEST(RKTURLComponents, MakeAURLOfSchemeAndPathAlone) {
    RKTURLComponents components;
    components.setScheme("https");
    components.setPath("/api/v4/user");
    EXPECT_EQ(textOf(components), "https:/api/v4/user");
    EXPECT_EQ(textOf(RKTURLComponents()), "");
}

}  // namespace
