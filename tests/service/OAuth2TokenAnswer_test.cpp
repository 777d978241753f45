#include "service/OAuth2TokenAnswer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KorvoGitService/KorvoGitServiceErrors.h"

namespace {

using testing::Optional;

constexpr RKTDate now(std::chrono::seconds(1'800'000'000));
constexpr const char* JSON = "application/json";
constexpr const char* form = "application/x-www-form-urlencoded";

rkt::OAuth2Tokens tokens(const std::string& contentType, std::string_view body) {
    auto answer = rkt::readTokenAnswer(contentType, body, now);
    if (const auto* error = std::get_if<RKTError>(&answer)) {
        ADD_FAILURE() << error->localizedDescription();
        return {};
    }
    return std::get<rkt::OAuth2Tokens>(answer);
}

RKTError error(const std::optional<std::string>& contentType, std::string_view body) {
    const auto answer = rkt::readTokenAnswer(contentType, body, now);
    if (const auto* error = std::get_if<RKTError>(&answer)) return *error;
    ADD_FAILURE() << "read as a success: " << body;
    return {"", 0};
}

void expectInvalid(const RKTError& error) {
    EXPECT_EQ(error.domain(), RKTKorvoGitServiceErrorDomain);
    EXPECT_EQ(error.code(), 2098);
    EXPECT_EQ(error.localizedDescription(), "Invalid response from OAuth2 request.");
}

/// The lifetime in seconds of a token whose answer has this "expires_in"; nothing for ever.
std::optional<std::int64_t> lifetime(const std::string& contentType, std::string_view body) {
    const auto date = tokens(contentType, body).expiryDate;
    if (date == RKTDateDistantFuture()) return std::nullopt;
    const auto difference = date - now;
    EXPECT_EQ(difference % std::chrono::seconds(1), RKTDate::duration(0));
    return std::chrono::floor<std::chrono::seconds>(difference).count();
}

// Which kind of answer it is

TEST(OAuth2TokenAnswerType, JSONWithACharsetIsJSON) {
    EXPECT_THAT(tokens("application/json; charset=utf-8", R"({"access_token":"abc"})").token,
                Optional(std::string("abc")));
    EXPECT_THAT(tokens("application/json;", R"({"access_token":"abc"})").token,
                Optional(std::string("abc")));
}

TEST(OAuth2TokenAnswerType, IsComparedWithRegardToCase) {
    expectInvalid(error("Application/JSON", R"({"access_token":"abc"})"));
    expectInvalid(error("application/X-WWW-form-urlencoded", "access_token=abc"));
}

TEST(OAuth2TokenAnswerType, IsComparedWithTheBlanksAroundIt) {
    expectInvalid(error("application/json ; charset=utf-8", R"({"access_token":"abc"})"));
    expectInvalid(error(" application/json", R"({"access_token":"abc"})"));
    expectInvalid(error("application/x-www-form-urlencoded ;", "access_token=abc"));
}

TEST(OAuth2TokenAnswerType, AFormWithACharsetIsAForm) {
    EXPECT_THAT(tokens("application/x-www-form-urlencoded; charset=utf-8", "access_token=a").token,
                Optional(std::string("a")));
}

TEST(OAuth2TokenAnswerType, IsNeitherWithoutTheHeader) {
    expectInvalid(error(std::nullopt, R"({"access_token":"abc"})"));
    expectInvalid(error("", R"({"access_token":"abc"})"));
    expectInvalid(error(";application/json", R"({"access_token":"abc"})"));
}

TEST(OAuth2TokenAnswerType, IsNeitherWithAnotherMediaType) {
    for (const char* other : {"text/html; charset=utf-8", "text/plain", "application/xml",
                              "application/json, application/json", "application/vnd.a+json",
                              "application/json,text/html"}) {
        expectInvalid(error(other, R"({"access_token":"abc"})"));
    }
}

// JSON

TEST(OAuth2TokenAnswerJSON, HasTokenRefreshTokenAndLifetime) {
    const auto read =
        tokens(JSON, R"({"access_token":"a%20+","refresh_token":"r","expires_in":28800,)"
                     R"("token_type":"bearer","scope":"repo","extra":[{}]})");
    EXPECT_THAT(read.token, Optional(std::string("a%20+")));
    EXPECT_THAT(read.refreshToken, Optional(std::string("r")));
    EXPECT_EQ(read.expiryDate, now + std::chrono::seconds(28800));
}

TEST(OAuth2TokenAnswerJSON, WithoutAnythingIsASuccessWithoutTokens) {
    const auto read = tokens(JSON, "{}");
    EXPECT_EQ(read.token, std::nullopt);
    EXPECT_EQ(read.refreshToken, std::nullopt);
    EXPECT_EQ(read.expiryDate, RKTDateDistantFuture());
}

TEST(OAuth2TokenAnswerJSON, ValuesOfAnotherTypeAreNone) {
    const auto read =
        tokens(JSON, R"({"access_token":123,"refresh_token":["r"],"expires_in":"3600"})");
    EXPECT_EQ(read.token, std::nullopt);
    EXPECT_EQ(read.refreshToken, std::nullopt);
    EXPECT_EQ(read.expiryDate, RKTDateDistantFuture());
    const auto nulls =
        tokens(JSON, R"({"access_token":null,"refresh_token":null,"expires_in":null})");
    EXPECT_EQ(nulls.token, std::nullopt);
    EXPECT_EQ(nulls.expiryDate, RKTDateDistantFuture());
}

TEST(OAuth2TokenAnswerJSON, OfTwoMembersOfOneNameTheFirstCounts) {
    EXPECT_THAT(tokens(JSON, R"({"access_token":"a","access_token":"b"})").token,
                Optional(std::string("a")));
    EXPECT_EQ(tokens(JSON, R"({"access_token":1,"access_token":"b"})").token, std::nullopt);
    EXPECT_THAT(tokens(JSON, R"({"error":1,"error":"access_denied","access_token":"a"})").token,
                Optional(std::string("a")));
}

TEST(OAuth2TokenAnswerJSON, ALifetimeIsTruncatedTowardZero) {
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":3600})"), Optional(3600));
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":3599.9})"), Optional(3599));
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":-3599.9})"), Optional(-3599));
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":0})"), Optional(0));
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":-0.5})"), Optional(0));
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":2.88e4})"), Optional(28800));
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":100000000000})"), Optional(100'000'000'000));
}

TEST(OAuth2TokenAnswerJSON, ALifetimeThatIsABooleanIsANumber) {
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":true})"), Optional(1));
    EXPECT_THAT(lifetime(JSON, R"({"expires_in":false})"), Optional(0));
}

TEST(OAuth2TokenAnswerJSON, ALifetimeBeyondTheCalendarEndsWithIt) {
    for (const char* huge : {"9223372036854775807", "18446744073709551615", "1e300",
                             "99999999999999999999999", "9223372036854", "9223372036855"}) {
        EXPECT_EQ(tokens(JSON, "{\"expires_in\":" + std::string(huge) + "}").expiryDate,
                  RKTDate::max())
            << huge;
    }
    for (const char* tiny : {"-9223372036854775808", "-1e300", "-99999999999999999999"}) {
        EXPECT_EQ(tokens(JSON, "{\"expires_in\":" + std::string(tiny) + "}").expiryDate,
                  RKTDate::min())
            << tiny;
    }
}

TEST(OAuth2TokenAnswerJSON, MayHaveAByteOrderMark) {
    EXPECT_THAT(tokens(JSON, "\xEF\xBB\xBF{\"access_token\":\"abc\"}").token,
                Optional(std::string("abc")));
}

TEST(OAuth2TokenAnswerJSON, ThatDoesNotParseGivesTheParsersError) {
    for (const char* broken : {"", " ", "{", "{\"access_token\":\"abc\",}", "<html>", "abc"}) {
        const auto reason = error(JSON, broken);
        EXPECT_EQ(reason.domain(), RKTError::NSCocoaErrorDomain) << broken;
        EXPECT_EQ(reason.code(), RKTError::NSPropertyListReadCorruptError) << broken;
    }
}

TEST(OAuth2TokenAnswerJSON, ThatDoesNotParseTellsNoSecret) {
    const auto reason = error(JSON, R"({"access_token":"secret-of-mine" "x"})");
    for (const auto& [key, value] : reason.userInfo()) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            EXPECT_THAT(*text, testing::Not(testing::HasSubstr("secret-of-mine"))) << key;
        }
    }
}

TEST(OAuth2TokenAnswerJSON, ThatIsAnArrayIsInvalid) {
    expectInvalid(error(JSON, "[]"));
    expectInvalid(error(JSON, R"([{"access_token":"abc"}])"));
}

TEST(OAuth2TokenAnswerJSON, WithAnErrorIsThatError) {
    const auto reason =
        error(JSON, R"({"error":"invalid_scope","error_description":"No such scope.",)"
                    R"("error_uri":"https://docs.example.com","access_token":"abc"})");
    EXPECT_EQ(reason.code(), 2005);
    EXPECT_EQ(reason.localizedDescription(), "No such scope.");
    EXPECT_EQ(reason.URL(), RKTURL::URLWithString("https://docs.example.com"));
}

TEST(OAuth2TokenAnswerJSON, WithAnErrorOfAnotherTypeIsASuccess) {
    for (const char* other : {"1", "true", "null", "{}", "[\"access_denied\"]"}) {
        const auto body = R"({"access_token":"abc","error":)" + std::string(other) + "}";
        EXPECT_THAT(tokens(JSON, body).token, Optional(std::string("abc"))) << other;
    }
}

TEST(OAuth2TokenAnswerJSON, DescriptionAndPageOfAnotherTypeAreNone) {
    const auto reason =
        error(JSON, R"({"error":"server_error","error_description":5,"error_uri":{}})");
    EXPECT_EQ(reason.code(), 2006);
    EXPECT_EQ(reason.localizedDescription(), "An unknown OAuth2 error occurred.");
    EXPECT_EQ(reason.URL(), std::nullopt);
}

// Forms

TEST(OAuth2TokenAnswerForm, WithATokenAloneNeverExpires) {
    const auto read = tokens(form, "access_token=abc&scope=repo&token_type=bearer");
    EXPECT_THAT(read.token, Optional(std::string("abc")));
    EXPECT_EQ(read.refreshToken, std::nullopt);
    EXPECT_EQ(read.expiryDate, RKTDateDistantFuture());
}

TEST(OAuth2TokenAnswerForm, HasTokenRefreshTokenAndLifetime) {
    const auto read = tokens(form, "access_token=a&refresh_token=r&expires_in=28800");
    EXPECT_THAT(read.token, Optional(std::string("a")));
    EXPECT_THAT(read.refreshToken, Optional(std::string("r")));
    EXPECT_EQ(read.expiryDate, now + std::chrono::seconds(28800));
}

TEST(OAuth2TokenAnswerForm, DecodesNothing) {
    const auto read = tokens(form, "access_token=a%20b+c&refresh%5Ftoken=r");
    EXPECT_THAT(read.token, Optional(std::string("a%20b+c")));
    EXPECT_EQ(read.refreshToken, std::nullopt);
}

TEST(OAuth2TokenAnswerForm, DropsWhatFollowsASecondEqualsSign) {
    EXPECT_THAT(tokens(form, "access_token=b=c").token, Optional(std::string("b")));
    EXPECT_THAT(tokens(form, "access_token==c").token, Optional(std::string()));
    EXPECT_THAT(tokens(form, "access_token=YWJj==&x=y").token, Optional(std::string("YWJj")));
}

TEST(OAuth2TokenAnswerForm, OfTwoPiecesOfOneNameTheLaterCounts) {
    EXPECT_THAT(tokens(form, "access_token=a&access_token=b").token, Optional(std::string("b")));
}

TEST(OAuth2TokenAnswerForm, ANameWithoutAValueTakesTheEarlierOneAway) {
    EXPECT_EQ(tokens(form, "access_token=a&access_token").token, std::nullopt);
    EXPECT_THAT(tokens(form, "access_token&access_token=a").token, Optional(std::string("a")));
    EXPECT_THAT(tokens(form, "access_token=a&access_token=").token, Optional(std::string()));
}

TEST(OAuth2TokenAnswerForm, ThatIsEmptyIsASuccessWithoutTokens) {
    for (const char* empty : {"", "&", "&&=&"}) {
        const auto read = tokens(form, empty);
        EXPECT_EQ(read.token, std::nullopt);
        EXPECT_EQ(read.expiryDate, RKTDateDistantFuture());
    }
}

TEST(OAuth2TokenAnswerForm, ThatIsNotUTF8HasNoPieces) {
    EXPECT_EQ(tokens(form, "access_token=a\xFF").token, std::nullopt);
    EXPECT_EQ(tokens(form, "error=access_denied&x=\xC3").token, std::nullopt);
}

TEST(OAuth2TokenAnswerForm, ALifetimeIsTheTextsIntegerValue) {
    EXPECT_THAT(lifetime(form, "expires_in="), Optional(0));
    EXPECT_THAT(lifetime(form, "expires_in=soon"), Optional(0));
    EXPECT_THAT(lifetime(form, "expires_in=60s"), Optional(60));
    EXPECT_THAT(lifetime(form, "expires_in=3599.9"), Optional(3599));
    EXPECT_THAT(lifetime(form, "expires_in= \t-60"), Optional(-60));
    EXPECT_THAT(lifetime(form, "expires_in=+60"), Optional(60));
    EXPECT_EQ(lifetime(form, "expires_in=60&expires_in"), std::nullopt);
    EXPECT_EQ(lifetime(form, "expires_in"), std::nullopt);
}

TEST(OAuth2TokenAnswerForm, ALifetimeBeyondTheCalendarEndsWithIt) {
    EXPECT_EQ(tokens(form, "expires_in=99999999999999999999").expiryDate, RKTDate::max());
    EXPECT_EQ(tokens(form, "expires_in=-99999999999999999999").expiryDate, RKTDate::min());
}

TEST(OAuth2TokenAnswerForm, WithAnErrorIsThatErrorAsItStands) {
    const auto reason = error(form,
                              "error=bad_verification_code&error_description=The+code+is%20wrong"
                              "&error_uri=https%3A%2F%2Fdocs.example.com&access_token=abc");
    EXPECT_EQ(reason.code(), 2000);
    EXPECT_EQ(reason.localizedDescription(), "The+code+is%20wrong");
    EXPECT_EQ(reason.URL(), RKTURL::URLWithString("https%3A%2F%2Fdocs.example.com"));
}

TEST(OAuth2TokenAnswerForm, AnErrorWithoutAValueIsNone) {
    EXPECT_THAT(tokens(form, "access_token=a&error").token, Optional(std::string("a")));
    EXPECT_EQ(error(form, "access_token=a&error=").code(), 2000);
}

}  // namespace
