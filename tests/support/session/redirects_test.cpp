// Redirects over real sockets: where they lead, as what, and what goes along.

#include <gtest/gtest.h>

#include "tests/helpers/Loading.h"

namespace {

using emulator::Answer;

class Redirects : public testing::Test {
protected:
    Origin origin;

    Loaded load() { return origin.load(origin.url("/x")); }
    /// What is asked for after a redirect there.
    std::string targetAfter(const std::string& location) {
        Answer redirect{.status = 301};
        redirect.headers.add("Location", location);
        origin.server.script({.path = "/x"}, redirect);
        origin.server.script({}, Answer{});
        EXPECT_EQ(load().status(), 200);
        return origin.server.requests().at(1).target;
    }
};

struct Hop {
    unsigned status;
    const char* method;
    const char* nextMethod;
    bool bodyStays;
};
void PrintTo(const Hop& hop, std::ostream* out) {
    *out << hop.status << hop.method;
}

class Redirect : public testing::TestWithParam<Hop> {};

TEST_P(Redirect, ChangesTheMethodAsHTTPSays) {
    Origin origin;
    Answer redirect{.status = GetParam().status};
    redirect.headers.add("Location", "/target?page=2");
    origin.server.script({.path = "/x"}, redirect);
    origin.server.script({.path = "/target"}, Answer{});
    auto request = requestTo(origin.url("/x"));
    request.setHTTPMethod(GetParam().method);
    if (request.HTTPMethod() == "POST") {
        request.setHTTPBody("grant=1");
        request.setValue("7", "Content-Length");
        request.setValue("de", "Content-Language");
    }
    const Loaded loaded = origin.load(request);
    EXPECT_EQ(loaded.status(), 200);
    EXPECT_EQ(loaded.response->URL()->absoluteString(), origin.url("/target?page=2"));
    const auto next = origin.server.requests().at(1);
    EXPECT_EQ(next.method, GetParam().nextMethod);
    EXPECT_EQ(next.target, "/target?page=2");
    EXPECT_EQ(next.body, GetParam().bodyStays ? "grant=1" : "");
    for (const auto* const ofBody : {"Content-Type", "Content-Length", "Content-Language"})
        EXPECT_EQ(next.headers.get(ofBody).has_value(), GetParam().bodyStays) << ofBody;
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, Redirect,
    testing::Values(Hop{301, "POST", "GET", false}, Hop{302, "POST", "GET", false},
                    Hop{303, "POST", "GET", false}, Hop{307, "POST", "POST", true},
                    Hop{308, "POST", "POST", true}, Hop{301, "GET", "GET", false},
                    Hop{303, "PUT", "GET", false}, Hop{302, "PUT", "PUT", false},
                    Hop{303, "HEAD", "HEAD", false}),
    [](const auto& tested) { return std::to_string(tested.param.status) + tested.param.method; });

TEST_F(Redirects, DeliversARedirectThatLeadsNowhere) {
    origin.server.script({.path = "/x"}, Answer{});
    origin.server.fault({.path = "/x"}, emulator::faults::redirectWithoutLocation());
    const Loaded loaded = load();
    EXPECT_FALSE(loaded.error);
    EXPECT_EQ(loaded.status() / 100, 3);
}

TEST_F(Redirects, FollowsNoLocationOfAStatusThatDoesNotRedirect) {
    for (const unsigned status : {200U, 201U, 300U, 304U, 305U, 306U, 404U}) {
        Answer answer{.status = status};
        answer.headers.add("Location", "/elsewhere");
        origin.server.clearScripts();
        origin.server.script({.path = "/x"}, answer);
        const Loaded loaded = load();
        EXPECT_EQ(loaded.status(), static_cast<int>(status));
        EXPECT_EQ(loaded.data, "");
        EXPECT_EQ(loaded.response->valueForHTTPHeaderField("Location"), "/elsewhere");
    }
    EXPECT_TRUE(origin.server.requests({.path = "/elsewhere"}).empty());
}

// Cookies belong to the host that this names.
TEST_F(Redirects, TakesTheHostFieldToTheSameOriginOnly) {
    const auto redirect = [&](const char* path, const std::string& location) {
        Answer answer{.status = 302};
        answer.headers.add("Location", location);
        answer.headers.add("Set-Cookie", "secret=planted");
        origin.server.script({.path = path}, answer);
    };
    redirect("/1", "/2");
    redirect("/2", "https://api.github.com/3");  // the same server under another name
    origin.server.script({.path = "/3"}, Answer{});
    auto request = requestTo(origin.url("/1"));
    request.setValue("app.example", "Host");
    EXPECT_EQ(origin.load(request).status(), 200);
    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[0].authority, "app.example");
    EXPECT_EQ(requests[1].authority, "app.example");
    EXPECT_EQ(requests[1].headers.get("Cookie"), "secret=planted");
    EXPECT_EQ(requests[2].authority, "api.github.com");
    EXPECT_FALSE(requests[2].headers.get("Cookie"));
}

TEST_F(Redirects, SendsAuthorizationToTheSameOriginOnlyAndNeverAgainAfterwards) {
    const std::string elsewhere = "https://api.github.com";  // the same server under another name
    const auto redirect = [&](const char* path, const std::string& location) {
        Answer answer{.status = 302};
        answer.headers.add("Location", location);
        origin.server.script({.path = path}, answer);
    };
    redirect("/1", "/2");              // the same origin
    redirect("/2", elsewhere + "/3");  // another host
    redirect("/3", origin.url("/4"));  // and back
    origin.server.script({.path = "/4"}, Answer{});
    auto request = requestTo(origin.url("/1"));
    request.setValue("Bearer planted", "Authorization");
    request.setValue("application/json", "Accept");
    EXPECT_EQ(origin.load(request).status(), 200);
    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 4U);
    EXPECT_EQ(requests[0].headers.get("Authorization"), "Bearer planted");
    EXPECT_EQ(requests[1].headers.get("Authorization"), "Bearer planted");
    EXPECT_FALSE(requests[2].headers.get("Authorization"));
    EXPECT_FALSE(requests[3].headers.get("Authorization"));
    EXPECT_EQ(requests[3].headers.get("Accept"), "application/json");
}

struct SameHost {
    const char* name;
    const char* host;
    const char* mappedHost;
    /// In the field "Host".
    const char* askedHost;
    const char* location;
};
void PrintTo(const SameHost& host, std::ostream* out) {
    *out << host.name;
}

class RedirectToTheSameHost : public testing::TestWithParam<SameHost> {};

TEST_P(RedirectToTheSameHost, TakesAuthorizationAlong) {
    const auto& [name, host, mappedHost, askedHost, location] = GetParam();
    Origin origin;
    origin.settings.hostMappings.push_back({mappedHost, 80, "127.0.0.1", origin.server.httpPort()});
    Answer redirect{.status = 302};
    redirect.headers.add("Location", location);
    origin.server.script({.path = "/1"}, redirect);
    origin.server.script({.path = "/2"}, Answer{});
    auto request = requestTo("http://" + std::string(host) + "/1");
    request.setValue("Bearer planted", "Authorization");
    EXPECT_EQ(origin.load(request).status(), 200);
    for (const auto& arrived : origin.server.requests()) {
        EXPECT_EQ(arrived.authority, askedHost);
        EXPECT_EQ(arrived.headers.get("Authorization"), "Bearer planted");
    }
    EXPECT_EQ(origin.server.requests().size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    , RedirectToTheSameHost,
    testing::Values(
        SameHost{"IPv6Relatively", "[2001:db8::1]", "2001:db8::1", "[2001:db8::1]", "/2"},
        SameHost{"IPv6", "[2001:db8::1]", "[2001:db8::1]", "[2001:db8::1]",
                 "http://[2001:DB8:0::1]/2"},
        // RFC 6874 section 4: a zone means something to its own machine only.
        SameHost{"ZoneRelatively", "[fe80::1%25lo]", "fe80::1", "[fe80::1]", "/2"},
        SameHost{"Zone", "[fe80::1%25lo]", "[fe80::1]", "[fe80::1]", "http://[fe80::1%25lo]:80/2"},
        SameHost{"InternationalName", "b%C3%BCcher.example", "xn--bcher-kva.example",
                 "xn--bcher-kva.example", "http://xn--bcher-kva.example/2"},
        SameHost{"EncodedName", "git%2Dlab.example", "git-lab.example", "git-lab.example",
                 "http://git-lab.example/2"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(Redirects, EncodesBracketsThatStandInNoHost) {
    EXPECT_EQ(targetAfter(origin.url("/[1]?page[size]=2#[x]")), "/%5B1%5D?page%5Bsize%5D=2");
}

TEST_F(Redirects, EncodesWhatALocationShouldNotHold) {
    EXPECT_EQ(targetAfter("/gr\xc3\xbc\xc3\x9f \"e\""), "/gr%C3%BC%C3%9F%20%22e%22");
}

TEST_F(Redirects, EncodesAPercentSignThatEncodesNothing) {
    EXPECT_EQ(targetAfter("/100%/%2f%2/%zz?50%&%\xc3\xbc%"),
              "/100%25/%2f%252/%25zz?50%25&%25%C3%BC%25");
}

TEST_F(Redirects, LeadNowhereWithASchemeWithoutAHost) {
    for (const char* location : {"https:/y", "https:y", "https:", "https:/x/..//evil.example/y",
                                 "https:/.//evil.example/y", "https:x/..//evil.example/y"}) {
        origin.server.clearScripts();
        origin.server.forgetRequests();
        Answer redirect{.status = 302};
        redirect.headers.add("Location", location);
        origin.server.script({}, redirect);
        EXPECT_EQ(load().code(), RKTError::NSURLErrorBadServerResponse) << location;
        EXPECT_EQ(origin.server.requests().size(), 1U) << location;
    }
}

TEST_F(Redirects, EncodesASecondHash) {
    Answer redirect{.status = 301};
    redirect.headers.add("Location", "/a?b#c#d");
    origin.server.script({.path = "/x"}, redirect);
    origin.server.script({}, Answer{});
    const Loaded loaded = load();
    EXPECT_EQ(loaded.status(), 200);
    EXPECT_EQ(loaded.response->URL()->absoluteString(), origin.url("/a?b#c%23d"));
    EXPECT_EQ(origin.server.requests().at(1).target, "/a?b");
}

}  // namespace
