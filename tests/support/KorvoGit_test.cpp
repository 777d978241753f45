#include "KorvoGitService/KorvoGit.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

std::string cloneURL(std::string_view text) {
    const auto url = rkt_URLWithString(text);
    return url ? url->absoluteString() : "nothing";
}

TEST(rkt_URLWithString, TurnsTheSCPFormIntoAURL) {
    EXPECT_EQ(cloneURL("git@github.com:octo/hello.git"), "ssh://git@github.com/octo/hello.git");
    EXPECT_EQ(cloneURL("org-123@github.com:octo/hello"), "ssh://org-123@github.com/octo/hello");
    EXPECT_EQ(cloneURL("git@host_1.example:~user/x.git"), "ssh://git@host_1.example/~user/x.git");
}

TEST(rkt_URLWithString, TakesANumberAfterAnSCPHostForThePath) {
    EXPECT_EQ(cloneURL("git@host:22/octo/hello.git"), "ssh://git@host/22/octo/hello.git");
}

TEST(rkt_URLWithString, TakesNoBracketsAroundAnSCPHostWithItsUser) {
    EXPECT_EQ(cloneURL("[git@host:2222]:octo/hello.git"), "nothing");
    EXPECT_EQ(cloneURL("[git@host]:octo/hello.git"), "nothing");
}

TEST(rkt_URLWithString, AddsNoSlashToAnAbsoluteSCPPath) {
    EXPECT_EQ(cloneURL("git@host:/srv/x.git"), "ssh://git@host/srv/x.git");
}

TEST(rkt_URLWithString, KeepsAnIPv6HostInItsBrackets) {
    EXPECT_EQ(cloneURL("git@[::1]:octo/x.git"), "ssh://git@[::1]/octo/x.git");
    EXPECT_EQ(cloneURL("git@[::1:octo/x.git"), "nothing");
    EXPECT_EQ(cloneURL("git@[::1]octo/x.git"), "nothing");
    EXPECT_EQ(cloneURL("git@[host:22]:octo/x.git"), "nothing");
}

TEST(rkt_URLWithString, EncodesTheZoneOfAnIPv6Host) {
    EXPECT_EQ(cloneURL("git@[fe80::1%eth0]:octo/x.git"), "ssh://git@[fe80::1%25eth0]/octo/x.git");
    EXPECT_EQ(cloneURL("ssh://git@[fe80::1%25eth0]/x"), "ssh://git@[fe80::1%25eth0]/x");
    EXPECT_EQ(cloneURL("git@[fe80::1%]:x"), "nothing");
    EXPECT_EQ(cloneURL("git@[h%eth0]:x"), "nothing");
    for (const auto* text : {"git@[::1%a/b]:x", "git@[::1%x]/a]:p", "git@[::1%a]b]:x",
                             "git@[::1%a@b]:x", "git@[::1%\n]:x", "git@[::1%\xC3\xBC]:x"}) {
        EXPECT_EQ(cloneURL(text), "nothing") << text;
    }
}

TEST(rkt_URLWithString, EncodesWhatAnSCPPathMayHoldAndAURLMayNot) {
    EXPECT_EQ(cloneURL("git@host:a b%20?c#d:e@f/\u00e9.git"),
              "ssh://git@host/a%20b%2520%3Fc%23d:e@f/%C3%A9.git");
    EXPECT_EQ(cloneURL("a@b@host:x"), "ssh://a%40b@host/x");
    EXPECT_EQ(cloneURL("\x01@host:x"), "ssh://%01@host/x");
}

TEST(rkt_URLWithString, RefusesAnSCPFormThatLacksAPart) {
    for (const auto* text :
         {"@host:x", "git@:x", "git@host:", "git@host", "git@", "@:", ":", "@"}) {
        EXPECT_EQ(cloneURL(text), "nothing") << text;
    }
}

TEST(rkt_URLWithString, RefusesTextThatNoSCPFormHolds) {
    for (const auto* text : {"git@ho st:x", "git@host\n:x", "git@host:x\ny", "git@host:x\x7F",
                             "git@host:\xFF", "git@h%41:x", "\xC3@host:x", "\xFF@host:x y"}) {
        EXPECT_EQ(cloneURL(text), "nothing") << text;
    }
}

TEST(rkt_URLWithString, KeepsAURLAsItIs) {
    for (const auto* text :
         {"https://github.com/octo/hello.git", "ssh://git@github.com:22/octo/hello.git",
          "git+ssh://git@host/x.git", "git://host/x", "HTTPS://user@Host/x", "ssh://git@[::1]:22/x",
          "file:///srv/x.git", "file://localhost/srv/x", "FILE:/srv/x", "https://h:99999/a@b:c"}) {
        EXPECT_EQ(cloneURL(text), text);
    }
}

TEST(rkt_URLWithString, RefusesAURLWithoutSchemeOrHost) {
    for (const auto* text : {"",
                             "github.com",
                             "octo/hello",
                             "/srv/x.git",
                             "//host/x",
                             "../x",
                             "https:/x",
                             "https://",
                             "https:///x",
                             "https://:80/x",
                             "https://u@/x",
                             "mailto:a@b",
                             "javascript:alert(1)",
                             "file:",
                             "file:x",
                             "file://",
                             "localhost:3000",
                             "host:octo/x.git",
                             "C:/repo",
                             "C:\\repo"}) {
        EXPECT_EQ(cloneURL(text), "nothing") << text;
    }
}

TEST(rkt_URLWithString, RefusesURLsWithCharactersThatNoneHolds) {
    for (const auto* text : {"https://h/a b", "https://h/\u00e9", "https://h/%4", " https://h/x"}) {
        EXPECT_EQ(cloneURL(text), "nothing") << text;
    }
}

}  // namespace
