#include "support/RequestTarget.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/helpers/URLs.h"

namespace {

using rkt::RequestTarget;
using rkt::TargetProblem;

RequestTarget target(std::string_view text) {
    return std::get<RequestTarget>(rkt::requestTarget(URL(text)));
}

std::string loadedURL(std::string_view text) {
    return target(text).URLForLoading();
}

TEST(RequestTarget, IsUnsupportedWithoutHTTP) {
    EXPECT_EQ(std::get<TargetProblem>(rkt::requestTarget(std::nullopt)),
              TargetProblem::UnsupportedURL);
    for (const auto* text :
         {"", "/api/v4/user", "//h/x", "git.example.com/x", "git.example.com:80/x", "ftp://h/",
          "file:///x", "httpss://h", "ssh://[::1"}) {
        EXPECT_EQ(std::get<TargetProblem>(rkt::requestTarget(URL(text))),
                  TargetProblem::UnsupportedURL)
            << text;
    }
}

TEST(RequestTarget, IsBadWithoutAHostOrItsStructure) {
    for (const auto* text :
         {"https:/api/v4/user", "https:", "http:h/x", "https://", "https:///x", "https://:80/",
          "https://u@/", "https://h:80a/", "https://h:65536/", "https://h:99999999999999999999/",
          "https://a@b@c/", "https://[::1", "https://h:-1/"}) {
        EXPECT_EQ(std::get<TargetProblem>(rkt::requestTarget(URL(text))), TargetProblem::BadURL)
            << text;
    }
}

TEST(RequestTarget, KnowsThePort) {
    EXPECT_EQ(target("https://h/").port, 443);
    EXPECT_EQ(target("http://h:/").port, 80);
    EXPECT_FALSE(target("http://h:/").portGiven);
    EXPECT_EQ(target("http://h:00008080/").port, 8080);
    EXPECT_EQ(target("http://h:0/").port, 0);
    EXPECT_EQ(target("http://h:65535/").port, 65535);
    EXPECT_TRUE(target("http://h:80/").portGiven);
}

TEST(RequestTarget, LoadsWithoutUserInformationAndFragment) {
    EXPECT_EQ(loadedURL("HTTPS://u:p@Host.Example:08443/a/../b%2f?c=d&e#f"),
              "https://Host.Example:8443/a/../b%2f?c=d&e");
}

TEST(RequestTarget, LoadsASlashForAnEmptyPath) {
    EXPECT_EQ(loadedURL("https://h"), "https://h/");
    EXPECT_EQ(loadedURL("https://h?x"), "https://h/?x");
    EXPECT_EQ(loadedURL("https://h?"), "https://h/?");
    EXPECT_EQ(loadedURL("https://h#f"), "https://h/");
}

TEST(RequestTarget, KeepsTheBracketsOfAnIPv6Host) {
    EXPECT_EQ(target("https://[::1]:8443/x").host, "[::1]");
    EXPECT_EQ(loadedURL("https://[::1]:8443/x"), "https://[::1]:8443/x");
}

// https://www.unicode.org/reports/tr46/, section 4.2.
TEST(RequestTarget, AsksForAnInternationalNameInASCII) {
    EXPECT_EQ(target("https://b%C3%BCcher.example/").host, "xn--bcher-kva.example");
    EXPECT_EQ(target("https://B%C3%9CCHER.example/").host, "xn--bcher-kva.example");
    EXPECT_EQ(target("https://fa%C3%9F.example/").host, "xn--fa-hia.example");
    EXPECT_EQ(target("https://git%2Dlab.example/").host, "git-lab.example");
    EXPECT_EQ(loadedURL("https://b%C3%BCcher.example:8443/x"),
              "https://xn--bcher-kva.example:8443/x");
}

TEST(RequestTarget, TakesHyphensWhereverANameHasThem) {
    EXPECT_EQ(target("https://r3---s%6E.example/").host, "r3---sn.example");
    EXPECT_EQ(target("https://%2Da-.example/").host, "-a-.example");
    EXPECT_EQ(target("https://ab--%C3%BC.example/").host, "xn--ab---3ra.example");
}

TEST(RequestTarget, RefusesAnEncodedHostThatIsNoName) {
    for (const std::string host :
         {"a%2Fb", "a%40b", "a%00b", "%C3", "%C2%AD", "a%3A1", "a%20b", "a%25b", "xn--%C3%BC",
          "a%2E%2Eb", "a%E2%80%8Db", "%D7%90a1", "a%E2%84%85b"}) {
        EXPECT_EQ(std::get<TargetProblem>(rkt::requestTarget(URL("https://" + host + "/"))),
                  TargetProblem::BadURL)
            << host;
    }
}

TEST(RequestTarget, KeepsTheZoneOfAnIPv6Host) {
    EXPECT_EQ(target("https://[fe80::1%25eth0]:8443/x").host, "[fe80::1%25eth0]");
    EXPECT_EQ(loadedURL("https://[fe80::1%25eth0]:8443/x"), "https://[fe80::1%25eth0]:8443/x");
    EXPECT_EQ(loadedURL("https://[fe80::1%25br%2D1]/"), "https://[fe80::1%25br-1]/");
}

TEST(RequestTarget, HasAnOriginOfSchemeHostAndPort) {
    const RequestTarget one = target("https://h.example/a");
    EXPECT_TRUE(rkt::sameOrigin(one, target("HTTPS://u@H.EXAMPLE:443/b?c")));
    EXPECT_FALSE(rkt::sameOrigin(one, target("http://h.example:443/a")));
    EXPECT_FALSE(rkt::sameOrigin(one, target("https://h.example:444/a")));
    EXPECT_FALSE(rkt::sameOrigin(one, target("https://h.example./a")));
    EXPECT_FALSE(rkt::sameOrigin(one, target("https://sub.h.example/a")));
}

TEST(RequestTarget, HasTheOriginOfAnIPv6AddressInAnySpelling) {
    const RequestTarget one = target("https://[2001:DB8::1]:8443/a");
    for (const auto* same :
         {"https://[2001:db8::1]:8443/b", "https://[2001:0db8:0000:0000:0000:0000:0000:0001]:8443/",
          "https://[2001:db8::0.0.0.1]:8443/"}) {
        EXPECT_TRUE(rkt::sameOrigin(one, target(same))) << same;
    }
    for (const auto* other : {"https://[2001:db8::2]:8443/", "https://[2001:db8::1]/",
                              "https://2001.db8..1:8443/", "https://[v1.a]:8443/"}) {
        EXPECT_FALSE(rkt::sameOrigin(one, target(other))) << other;
    }
    EXPECT_TRUE(rkt::sameOrigin(target("https://[v1.A]/"), target("https://[V1.a]/")));
}

TEST(RequestTarget, HasAnotherOriginAtAnotherInterface) {
    const RequestTarget one = target("https://[fe80::1%25eth0]/");
    EXPECT_TRUE(rkt::sameOrigin(one, target("https://[FE80:0::1%25%65th0]/")));
    for (const auto* other :
         {"https://[fe80::1%25eth1]/", "https://[fe80::1%25ETH0]/", "https://[fe80::1]/"}) {
        EXPECT_FALSE(rkt::sameOrigin(one, target(other))) << other;
    }
}

TEST(failingURLString, LeavesOutUserInformationQueryAndFragment) {
    EXPECT_EQ(rkt::failingURLString(URL("https://user:secret@h:8443/a/b?token=secret#secret")),
              "https://h:8443/a/b");
    EXPECT_EQ(rkt::failingURLString(URL("https://[::1]/")), "https://[::1]/");
    EXPECT_EQ(rkt::failingURLString(URL("https://[fe80::1%25eth0]/?x")),
              "https://[fe80::1%25eth0]/");
    EXPECT_EQ(rkt::failingURLString(URL("https:/api/v4/user?x")), "https:/api/v4/user");
    EXPECT_EQ(rkt::failingURLString(URL("")), "");
}

TEST(failingURLString, TellsNothingOfATextThatMayHoldASecretElsewhere) {
    for (const auto* text :
         {"https://user:se@cret@h/", "https://user:se/cret@h/", "https://user:12/cret@h/",
          "https://secret/x@h/", "https://user:se?cret@h/", "https://secret?cret@h/",
          "https://user:se#cret@h/", "https://secret#cret@h/", "https://user:secret",
          "https:secret@h/", "user:secret@h/", "secret@h", "secret", "https://user%3Asecret%40h/",
          "https://user:se:cret@h/", "//user:se/cret@h"}) {
        EXPECT_EQ(rkt::failingURLString(URL(text)), "") << text;
    }
}

}  // namespace
