#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTService.h"
#include "tests/helpers/SignIn.h"

namespace {

using testing::Optional;
using testing::UnorderedElementsAre;

/// The pieces of a form's text, in any order a provider must understand.
std::vector<std::string> pieces(const std::string& body) {
    std::vector<std::string> all;
    std::size_t begin = 0;
    while (begin <= body.size()) {
        const auto end = std::min(body.find('&', begin), body.size());
        all.push_back(body.substr(begin, end - begin));
        begin = end + 1;
    }
    return all;
}

class OAuth2TokenRequest : public testing::Test {
protected:
    SignInServiceClass service;
    std::shared_ptr<RKTServiceCredentials> credentials = filledSignIn();

    std::vector<std::string> form(bool isRefresh) const {
        return pieces(
            service.OAuth2AccessTokenRequestForCredentials(*credentials, isRefresh).HTTPBody());
    }
};

TEST_F(OAuth2TokenRequest, IsAPostOfAFormToTheEndpointAsItStands) {
    service.tokenEndpoint = "https://git.example.com/token?tenant=1";
    const auto request = service.OAuth2AccessTokenRequestForCredentials(*credentials, false);
    EXPECT_EQ(request.URL(), RKTURL::URLWithString("https://git.example.com/token?tenant=1"));
    EXPECT_EQ(request.HTTPMethod(), "POST");
    EXPECT_THAT(request.allHTTPHeaderFields(),
                testing::ElementsAre(
                    RKTURLRequest::Header("Content-Type", "application/x-www-form-urlencoded")));
}

TEST_F(OAuth2TokenRequest, ExchangesTheCode) {
    EXPECT_THAT(
        form(false),
        UnorderedElementsAre("grant_type=authorization_code", "code=old-code", "client_id=a-client",
                             "client_secret=client-secret", "redirect_uri=myapp://oauth/callback"));
}

TEST_F(OAuth2TokenRequest, RefreshesWithTheCodesValueAndNoRedirect) {
    EXPECT_THAT(form(true),
                UnorderedElementsAre("grant_type=refresh_token", "refresh_token=old-code",
                                     "client_id=a-client", "client_secret=client-secret"));
}

TEST_F(OAuth2TokenRequest, ARefreshWithoutACodeHasThreeFields) {
    credentials->setOAuthCode(std::nullopt);
    EXPECT_THAT(form(true), UnorderedElementsAre("grant_type=refresh_token", "client_id=a-client",
                                                 "client_secret=client-secret"));
}

TEST_F(OAuth2TokenRequest, LeavesOutWhatIsNotSet) {
    credentials = emptySignIn();
    EXPECT_THAT(form(false), UnorderedElementsAre("grant_type=authorization_code"));
    EXPECT_THAT(form(true), UnorderedElementsAre("grant_type=refresh_token"));
}

TEST_F(OAuth2TokenRequest, KeepsWhatIsSetToTheEmptyText) {
    credentials = emptySignIn();
    credentials->setOAuthCode("");
    credentials->setOAuthClientSecret("");
    EXPECT_THAT(form(false),
                UnorderedElementsAre("grant_type=authorization_code", "code=", "client_secret="));
}

TEST_F(OAuth2TokenRequest, SendsTheSignsOfAFormAsTheyAreInAValue) {
    credentials = emptySignIn();
    credentials->setOAuthClientSecret("a+b&c=d");
    EXPECT_EQ(service.OAuth2AccessTokenRequestForCredentials(*credentials, true).HTTPBody(),
              "grant_type=refresh_token&client_secret=a+b&c=d");
}

TEST_F(OAuth2TokenRequest, EncodesWhatAQueryCannotHold) {
    credentials = emptySignIn();
    credentials->setOAuthCode("-._~!$&'()*+,;=:@/? %\"#[]é\n");
    credentials->setOAuthRedirectURL(RKTURL::URLWithString("https://app.example.com/a%20b?c#d"));
    EXPECT_THAT(form(false),
                testing::IsSupersetOf({"code=-._~!$", "'()*+,;=:@/?%20%25%22%23%5B%5D%C3%A9%0A",
                                       "redirect_uri=https://app.example.com/"
                                       "a%2520b?c%23d"}));
}

TEST_F(OAuth2TokenRequest, ChangesNothingInTheRecord) {
    static_cast<void>(form(false));
    static_cast<void>(form(true));
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

class OAuth2TokenResponse : public testing::Test {
protected:
    SignInServiceClass service;
    std::shared_ptr<RKTServiceCredentials> credentials = filledSignIn();
    std::optional<RKTError> error;

    bool update(int status, std::vector<RKTHTTPURLResponse::Header> headers,
                std::string_view body) {
        const RKTHTTPURLResponse response(std::nullopt, status, std::move(headers));
        return service.updateCredentials(*credentials, response, body, &error);
    }
    bool updateWithJSON(int status, std::string_view body) {
        return update(status, {{"Content-Type", "application/json"}}, body);
    }
};

TEST_F(OAuth2TokenResponse, WritesTheThreePropertiesAndTouchesNothingElse) {
    const auto before = std::chrono::system_clock::now();
    EXPECT_TRUE(updateWithJSON(
        200, R"({"access_token":"new-token","refresh_token":"new-refresh","expires_in":3600})"));
    const auto after = std::chrono::system_clock::now();

    EXPECT_FALSE(error);
    EXPECT_THAT(credentials->token(), Optional(std::string("new-token")));
    EXPECT_THAT(credentials->refreshToken(), Optional(std::string("new-refresh")));
    const auto issued = credentials->expiryDate().value() - std::chrono::hours(1);
    EXPECT_GE(issued, std::chrono::floor<RKTDate::duration>(before));
    EXPECT_LE(issued, after);

    const auto expected = filledSignIn();
    expected->setToken(credentials->token());
    expected->setRefreshToken(credentials->refreshToken());
    expected->setExpiryDate(credentials->expiryDate());
    EXPECT_TRUE(sameProperties(*credentials, *expected));
}

TEST_F(OAuth2TokenResponse, AlwaysOverwritesAllThreeProperties) {
    EXPECT_TRUE(updateWithJSON(200, "{}"));
    EXPECT_EQ(credentials->token(), std::nullopt);
    EXPECT_EQ(credentials->refreshToken(), std::nullopt);
    EXPECT_THAT(credentials->expiryDate(), Optional(RKTDateDistantFuture()));
}

TEST_F(OAuth2TokenResponse, FindsTheMediaTypeInAnyLetterCaseOfTheHeadersName) {
    EXPECT_TRUE(update(200, {{"content-TYPE", "application/json"}}, R"({"access_token":"t"})"));
    EXPECT_THAT(credentials->token(), Optional(std::string("t")));
}

TEST_F(OAuth2TokenResponse, LooksAtTheBodyWhateverTheStatus) {
    EXPECT_TRUE(updateWithJSON(500, R"({"access_token":"t"})"));
    EXPECT_THAT(credentials->token(), Optional(std::string("t")));
}

TEST_F(OAuth2TokenResponse, A401WithAnErrorIsThatError) {
    EXPECT_FALSE(updateWithJSON(
        401, R"({"error":"unauthorized_client","error_description":"Who are you?"})"));
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2UnauthorizedClient);
    EXPECT_EQ(error->localizedDescription(), "Who are you?");
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

TEST_F(OAuth2TokenResponse, A500WithAPageIsInvalid) {
    EXPECT_FALSE(update(500, {{"Content-Type", "text/html"}}, "<html>Oh no</html>"));
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2InvalidResponse);
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

TEST_F(OAuth2TokenResponse, AnArrayIsInvalidAndChangesNothing) {
    EXPECT_FALSE(updateWithJSON(200, "[1]"));
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2InvalidResponse);
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

TEST_F(OAuth2TokenResponse, AnswersTheSameWhenNobodyWantsTheReason) {
    const RKTHTTPURLResponse page(std::nullopt, 200, {{"Content-Type", "text/html"}});
    EXPECT_FALSE(service.updateCredentials(*credentials, page, "{}"));
    const RKTHTTPURLResponse JSON(std::nullopt, 200, {{"Content-Type", "application/json"}});
    EXPECT_FALSE(service.updateCredentials(*credentials, JSON, "{"));
    EXPECT_FALSE(service.updateCredentials(*credentials, JSON, R"({"error":"foo"})"));
    EXPECT_TRUE(service.updateCredentials(*credentials, JSON, "{}"));
}

TEST(OAuth2TokenMisuse, TheAbstractClassMakesNoRequest) {
    EXPECT_EQ(misuse([] {
                  RKTService::serviceClass()->OAuth2AccessTokenRequestForCredentials(
                      *filledSignIn(), false);
              }),
              "OAuth2AccessTokenRequestForCredentials:isRefresh: should only be invoked on a "
              "concrete service subclass.");
}

TEST(OAuth2TokenMisuse, TheAbstractClassReadsNoAnswer) {
    const auto credentials = filledSignIn();
    const RKTHTTPURLResponse response(std::nullopt, 200, {{"Content-Type", "application/json"}});
    EXPECT_EQ(misuse([&] {
                  RKTService::serviceClass()->updateCredentials(*credentials, response, "{}");
              }),
              "updateCredentials:withOAuth2AccessTokenResponse:data:error: should only be invoked "
              "on a concrete service subclass.");
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

TEST(OAuth2TokenMisuse, TheAbstractClassUpdatesNoToken) {
    EXPECT_EQ(misuse([] {
                  RKTService::serviceClass()->updateOAuth2AccessTokenWithCredentials(
                      filledSignIn(), false, [](auto) { FAIL(); });
              }),
              "updateOAuth2AccessTokenWithCredentials:isRefresh:completionHandler: should only be "
              "invoked on a concrete service subclass.");
}

TEST(OAuth2TokenMisuse, AnAdapterWithoutTheHookMakesNoRequestAndUpdatesNoToken) {
    const struct : RKTServiceClass {
    } plain;
    const std::string reason =
        "OAuth2AccessTokenEndpointForCredentials: must be overridden by subclasses.";
    EXPECT_EQ(misuse([&] { plain.OAuth2AccessTokenRequestForCredentials(*filledSignIn(), true); }),
              reason);
    EXPECT_EQ(misuse([&] {
                  plain.updateOAuth2AccessTokenWithCredentials(filledSignIn(), false,
                                                               [](auto) { FAIL(); });
              }),
              reason);
}

}  // namespace
