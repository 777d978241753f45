#include "KorvoGitService/RKTHTTPURLResponse.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>

#include "support/StatusTexts.h"
#include "support/Text.h"

namespace {

TEST(RKTHTTPURLResponse, KeepsWhatItWasMadeOf) {
    const auto url = RKTURL::URLWithString("https://git.example.com/user");
    const RKTHTTPURLResponse response(url, 404, {{"a", "1"}, {"B", "2"}, {"a", "3"}});
    EXPECT_EQ(response.URL(), url);
    EXPECT_EQ(response.statusCode(), 404);
    EXPECT_EQ(response.allHeaderFields().size(), 3u);
}

TEST(RKTHTTPURLResponse, FindsHeadersInAnyLetterCase) {
    const RKTHTTPURLResponse response(std::nullopt, 200, {{"Link", "<x>"}, {"Empty", ""}});
    EXPECT_EQ(response.valueForHTTPHeaderField("link"), "<x>");
    EXPECT_EQ(response.valueForHTTPHeaderField("LINK"), "<x>");
    EXPECT_EQ(response.valueForHTTPHeaderField("empty"), "");
    EXPECT_FALSE(response.valueForHTTPHeaderField("links"));
    EXPECT_FALSE(response.valueForHTTPHeaderField(""));
}

TEST(RKTHTTPURLResponse, JoinsHeadersOfOneName) {
    const RKTHTTPURLResponse response(std::nullopt, 200,
                                      {{"link", "<a>"}, {"X", "y"}, {"Link", ""}, {"LINK", "<b>"}});
    EXPECT_EQ(response.valueForHTTPHeaderField("Link"), "<a>, , <b>");
}

std::string description(int status) {
    return rkt::capitalized(RKTHTTPURLResponse::localizedStringForStatusCode(status));
}

TEST(StatusTexts, AreTheRegistrysInLowerCase) {
    EXPECT_EQ(RKTHTTPURLResponse::localizedStringForStatusCode(404), "not found");
    EXPECT_EQ(rkt::statusText(422), "unprocessable content");
    EXPECT_EQ(rkt::statusText(429), "too many requests");
    EXPECT_EQ(rkt::statusText(100), "continue");
    EXPECT_EQ(rkt::statusText(511), "network authentication required");
}

TEST(StatusTexts, ReadWellInCapitals) {
    const std::map<int, std::string> expected = {
        {103, "Early Hints"},
        {200, "Ok"},
        {203, "Non-Authoritative Information"},
        {207, "Multi-Status"},
        {208, "Already Reported"},
        {226, "Im Used"},
        {308, "Permanent Redirect"},
        {401, "Unauthorized"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {408, "Request Timeout"},
        {413, "Content Too Large"},
        {414, "Uri Too Long"},
        {418, "I'm A Teapot"},
        {421, "Misdirected Request"},
        {425, "Too Early"},
        {428, "Precondition Required"},
        {431, "Request Header Fields Too Large"},
        {451, "Unavailable For Legal Reasons"},
        {500, "Internal Server Error"},
        {503, "Service Unavailable"},
        {505, "Http Version Not Supported"},
        {506, "Variant Also Negotiates"},
        {507, "Insufficient Storage"},
        {508, "Loop Detected"},
        {510, "Not Extended"},
        {511, "Network Authentication Required"},
    };
    for (const auto& [status, text] : expected) {
        EXPECT_EQ(description(status), text) << status;
    }
}

TEST(StatusTexts, AreThoseOfTheClassForOtherNumbers) {
    const std::map<int, std::string> expected = {
        {104, "informational"}, {199, "informational"},
        {218, "success"},       {299, "success"},
        {306, "redirected"},    {399, "redirected"},
        {419, "client error"},  {420, "client error"},
        {499, "client error"},  {509, "server error"},
        {520, "server error"},  {599, "server error"},
        {600, "server error"},  {999, "server error"},
        {99, "server error"},   {0, "server error"},
        {-404, "server error"}, {std::numeric_limits<int>::max(), "server error"},
    };
    for (const auto& [status, text] : expected) {
        EXPECT_EQ(rkt::statusText(status), text) << status;
    }
}

}  // namespace
