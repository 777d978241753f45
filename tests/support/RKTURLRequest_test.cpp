#include "KorvoGitService/RKTURLRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(RKTURLRequest, IsAGETWithoutHeadersAndBody) {
    const auto url = RKTURL::URLWithString("https://git.example.com/user");
    const RKTURLRequest request(url);
    EXPECT_EQ(request.URL(), url);
    EXPECT_EQ(request.HTTPMethod(), "GET");
    EXPECT_EQ(request.HTTPBody(), "");
    EXPECT_THAT(request.allHTTPHeaderFields(), IsEmpty());
    EXPECT_FALSE(RKTURLRequest(std::nullopt).URL());
}

TEST(RKTURLRequest, FindsHeadersInAnyLetterCase) {
    RKTURLRequest request(std::nullopt);
    request.setValue("Basic dTpw", "Authorization");
    EXPECT_EQ(request.valueForHTTPHeaderField("authorization"), "Basic dTpw");
    EXPECT_EQ(request.valueForHTTPHeaderField("AUTHORIZATION"), "Basic dTpw");
    EXPECT_FALSE(request.valueForHTTPHeaderField("Authorizatio"));
    EXPECT_FALSE(request.valueForHTTPHeaderField(""));
}

TEST(RKTURLRequest, ReplacesAHeaderInAnyLetterCase) {
    RKTURLRequest request(std::nullopt);
    request.setValue("one", "Accept");
    request.setValue("two", "ACCEPT");
    EXPECT_THAT(request.allHTTPHeaderFields(), ElementsAre(Pair("ACCEPT", "two")));
}

TEST(RKTURLRequest, RemovesAHeaderWithNothing) {
    RKTURLRequest request(std::nullopt);
    request.setValue("one", "Accept");
    request.setValue("two", "X-Other");
    request.setValue(std::nullopt, "accept");
    EXPECT_THAT(request.allHTTPHeaderFields(), ElementsAre(Pair("X-Other", "two")));
    request.setValue("", "X-Other");
    EXPECT_EQ(request.valueForHTTPHeaderField("x-other"), "");
}

TEST(RKTURLRequest, TakesANameOfItsOwnHeaders) {
    RKTURLRequest request(std::nullopt);
    request.setValue("one", "X-A-Name-That-Is-Kept-On-The-Heap");
    request.setValue("two", "X-Another");
    request.setValue("three", request.allHTTPHeaderFields().front().first);
    EXPECT_EQ(request.valueForHTTPHeaderField("x-a-name-that-is-kept-on-the-heap"), "three");
    EXPECT_EQ(request.valueForHTTPHeaderField("x-another"), "two");
    EXPECT_EQ(request.allHTTPHeaderFields().size(), 2u);
}

}  // namespace
