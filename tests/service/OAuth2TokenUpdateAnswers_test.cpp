// What comes of the provider's answers to token updates, and of redirects.

#include <gmock/gmock.h>

#include <functional>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "tests/service/OAuth2TokenUpdate.h"

namespace {

using emulator::Answer;
using testing::Optional;

TEST_F(OAuth2TokenUpdate, ReadsAnAnswerOfAMebibyte) {
    const std::string token(std::size_t{1} << 20, 't');
    answerWith("application/json", R"({"access_token":")" + token + R"("})");
    EXPECT_EQ(update(), std::nullopt);
    EXPECT_TRUE(credentials->token() == token);

    origin.server.clearScripts();
    answerWith("application/x-www-form-urlencoded", "x=" + token + "&access_token=small");
    outcomes.clear();
    EXPECT_EQ(update(), std::nullopt);
    EXPECT_EQ(credentials->token(), "small");
}

TEST_F(OAuth2TokenUpdate, AnAnswerWithoutMediaTypeIsInvalid) {
    answerWith("", R"({"access_token":"new-token"})");
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2InvalidResponse);
    expectUntouched();
}

TEST_F(OAuth2TokenUpdate, AnAnswerThatIsCutOffIsTheTransportsError) {
    answerWithToken();
    origin.server.fault({}, emulator::faults::cutOffBody());
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RKTError::NSURLErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSURLErrorNetworkConnectionLost);
    expectUntouched();
}

TEST_F(OAuth2TokenUpdate, AnAnswerThatEndsTooEarlyToBeJSONIsTheParsersError) {
    answerWith("application/json", R"({"access_token":"new-tok)");
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RKTError::NSCocoaErrorDomain);
    expectUntouched();
}

TEST_F(OAuth2TokenUpdate, A401WithAnErrorIsThatError) {
    answerWith("application/json",
               R"({"error":"unauthorized_client","error_description":"Who are you?"})", 401);
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2UnauthorizedClient);
    EXPECT_EQ(error->localizedDescription(), "Who are you?");
    expectUntouched();
}

TEST_F(OAuth2TokenUpdate, A500WithAPageIsInvalid) {
    answerWith("text/html", "<html>Oh no</html>", 500);
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2InvalidResponse);
    expectUntouched();
}

TEST_F(OAuth2TokenUpdate, ATransportErrorComesUnchanged) {
    origin.server.presentCertificate(emulator::Leaf::WrongName);
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RKTError::NSURLErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSURLErrorServerCertificateUntrusted);
    expectUntouched();
}

// Redirects

TEST_F(OAuth2TokenUpdate, RepeatsTheFormWhereAStatusOf307PointsAtTheSameOrigin) {
    Answer redirect;
    redirect.status = 307;
    redirect.headers.add("Location", "/token");
    origin.server.script({.path = "/login/oauth/access_token"}, redirect);
    origin.server.script({.path = "/token"},
                         emulator::jsonAnswer(200, R"({"access_token":"new-token"})"));
    EXPECT_EQ(update(), std::nullopt);
    EXPECT_THAT(credentials->token(), Optional(std::string("new-token")));

    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1].method, "POST");
    EXPECT_EQ(requests[1].authority, "github.com");
    EXPECT_TRUE(requests[1].tls);
    EXPECT_EQ(requests[1].body, requests[0].body);
    for (const auto& request : requests) {
        EXPECT_EQ(request.headers.get("Authorization"), std::nullopt);
    }
}

TEST_F(OAuth2TokenUpdate, RepeatsTheFormOverTLSOnly) {
    origin.server.fault({}, emulator::faults::redirectTo(307, "http://github.com/token"));
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RKTError::NSURLErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSURLErrorBadServerResponse);
    EXPECT_EQ(origin.server.requestCount(), 1U);
    expectUntouched();
}

// The shared session

TEST_F(OAuth2TokenUpdate, KeepsCookiesAmongTokenUpdatesAndFromServices) {
    Answer answer = emulator::jsonAnswer(200, "{}");
    answer.headers.add("Set-Cookie", "flavour=oats; Path=/; Secure");
    origin.server.script({.host = "github.com"}, answer);
    ASSERT_EQ(update(), std::nullopt);
    outcomes.clear();
    ASSERT_EQ(update(), std::nullopt);
    EXPECT_EQ(origin.load("https://github.com/elsewhere").status(), 200);

    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_THAT(requests[1].headers.get("Cookie").value_or(""), testing::HasSubstr("flavour=oats"));
    EXPECT_EQ(requests[2].headers.get("Cookie"), std::nullopt);
}

TEST_F(OAuth2TokenUpdate, FollowsTheSharedNetworkSettings) {
    answerWithToken();
    ASSERT_EQ(update(), std::nullopt);
    const Origin other;
    RKTNetworkSettings::setShared(other.settings);
    outcomes.clear();
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2Unknown);
    EXPECT_EQ(origin.server.requestCount(), 1U);
    EXPECT_EQ(other.server.requestCount(), 1U);
}

// Secrets

TEST_F(OAuth2TokenUpdate, NoErrorTellsASecret) {
    credentials->setOAuthClientID("the-client");
    credentials->setOAuthClientSecret("the-secret");
    credentials->setOAuthCode("the-code");
    credentials->setToken("the-old-token");
    std::vector<std::function<void()>> failures = {
        [&] { origin.server.presentCertificate(emulator::Leaf::Expired); },
        [&] {
            origin.server.presentCertificate(emulator::Leaf::Valid);
            answerWith("application/json", R"({"access_token":"the-new-token" oh})");
        },
        [&] { answerWith("text/plain", "access_token=the-new-token"); },
        [&] { answerWith("application/json", R"(["the-new-token"])"); },
        [&] { origin.server.fault({}, emulator::faults::cutOffBody()); },
        [&] { origin.server.stop(); },
    };
    for (const auto& prepare : failures) {
        origin.server.clearScripts();
        prepare();
        outcomes.clear();
        const auto error = update();
        ASSERT_TRUE(error);
        for (const auto& [key, value] : error->userInfo()) {
            const auto* url = std::get_if<RKTURL>(&value);
            const auto* text = std::get_if<std::string>(&value);
            if (url) text = &url->absoluteString();
            if (text) {
                EXPECT_THAT(*text, testing::Not(testing::HasSubstr("the-"))) << key;
            }
        }
    }
}

}  // namespace
