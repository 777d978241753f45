#include "tools/korvogit-emulator/Message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/korvogit-emulator/Authorization.h"
#include "tools/korvogit-emulator/Dates.h"
#include "tools/korvogit-emulator/Digest.h"

namespace {

using emulator::Authorization;
using emulator::Headers;
using emulator::QueryItem;
using emulator::Request;
using testing::ElementsAre;

TEST(EmulatorHeaders, AreFoundInAnyCase) {
    Headers headers{{"Link", "a"}, {"X-Other", "b"}};
    headers.add("LINK", "c");
    EXPECT_EQ(headers.get("link"), "a");
    EXPECT_THAT(headers.all("Link"), ElementsAre("a", "c"));
    EXPECT_EQ(headers.get("Lin"), std::nullopt);
}

TEST(EmulatorHeaders, ReplaceAndRemoveAllOfAName) {
    Headers headers{{"a", "1"}, {"A", "2"}, {"b", "3"}};
    headers.set("A", "4");
    EXPECT_THAT(headers.all("a"), ElementsAre("4"));
    headers.remove("a");
    EXPECT_EQ(headers.size(), 1U);
}

TEST(EmulatorQuery, IsSplitAndDecoded) {
    EXPECT_THAT(emulator::parseQuery("a=1&&b&c=x=y&d=%41+%2B%zz%"),
                ElementsAre(QueryItem{"a", "1"}, QueryItem{"b", ""}, QueryItem{"c", "x=y"},
                            QueryItem{"d", "A +%zz%"}));
    EXPECT_TRUE(emulator::parseQuery("").empty());
}

TEST(EmulatorQuery, GivesTheLastValueOfAName) {
    Request request;
    request.query = "page=1&page=2";
    EXPECT_EQ(request.queryValue("page"), "2");
    EXPECT_EQ(request.queryValue("per_page"), std::nullopt);
}

TEST(EmulatorRequest, TakesThePortOffTheHost) {
    const auto hostOf = [](const std::string& authority) {
        Request request;
        request.authority = authority;
        return request.host();
    };
    EXPECT_EQ(hostOf("api.github.com:443"), "api.github.com");
    EXPECT_EQ(hostOf("api.github.com"), "api.github.com");
    EXPECT_EQ(hostOf("[::1]:8080"), "[::1]");
    EXPECT_EQ(hostOf("[::1]"), "[::1]");
}

Authorization authorizationOf(const std::string& header) {
    Request request;
    request.headers.add("Authorization", header);
    return emulator::readAuthorization(request);
}

TEST(EmulatorAuthorization, SplitsBasicAtTheFirstColon) {
    const auto read = authorizationOf("basic " + emulator::base64("user:to:ken"));
    EXPECT_EQ(read.scheme, Authorization::Scheme::Basic);
    EXPECT_EQ(read.user, "user");
    EXPECT_EQ(read.secret, "to:ken");
}

TEST(EmulatorAuthorization, ReadsTokens) {
    EXPECT_EQ(authorizationOf("Bearer abc").secret, "abc");
    EXPECT_EQ(authorizationOf("token abc").scheme, Authorization::Scheme::Bearer);
    EXPECT_EQ(authorizationOf("Digest abc").scheme, Authorization::Scheme::Unknown);
    EXPECT_EQ(emulator::readAuthorization({}).scheme, Authorization::Scheme::None);
}

TEST(EmulatorDigest, AgreesWithKnownValues) {
    EXPECT_EQ(emulator::base64("(null):t"), "KG51bGwpOnQ=");
    EXPECT_EQ(emulator::base64Decoded("KG51bGwpOnQ="), "(null):t");
    EXPECT_EQ(emulator::base64(""), "");
    EXPECT_EQ(emulator::base64Decoded("?"), "");
    EXPECT_EQ(emulator::sha256("abc"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(EmulatorDates, AreWrittenAsTheServicesWriteThem) {
    EXPECT_EQ(emulator::isoDate(1709208000), "2024-02-29T12:00:00Z");
    EXPECT_EQ(emulator::httpDate(784111777), "Sun, 06 Nov 1994 08:49:37 GMT");
    EXPECT_EQ(emulator::spacedDate(0), "1970-01-01 00:00:00 UTC");
}

TEST(EmulatorStatus, HasItsUsualReason) {
    EXPECT_EQ(emulator::usualReason(422), "Unprocessable Entity");
    EXPECT_EQ(emulator::usualReason(599), "Unknown");
}

}  // namespace
