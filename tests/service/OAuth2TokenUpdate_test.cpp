// The token update against an emulated provider.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTGitHubService.h"
#include "tests/helpers/Loading.h"
#include "tests/helpers/MainThread.h"
#include "tests/helpers/SignIn.h"

namespace {

using emulator::Answer;
using emulator::HoldStage;
using emulator::Match;
using testing::Optional;
using State = RKTURLSessionDataTask::State;

constexpr const char* tokenPath = "/login/oauth/access_token";

class OAuth2TokenUpdate : public testing::Test {
protected:
    Origin origin;
    const RKTServiceClass* gitHub = RKTGitHubService::serviceClass();
    std::shared_ptr<RKTServiceCredentials> credentials = filledSignIn();
    /// One for each time that a handler ran.
    std::vector<std::optional<RKTError>> outcomes;

    OAuth2TokenUpdate() {
        RKTMainQueue::setExecutor({});
        RKTNetworkSettings::setShared(origin.settings);
    }
    ~OAuth2TokenUpdate() override {
        RKTMainQueue::setExecutor({});
        settle();
        RKTNetworkSettings::setShared({});
    }

    std::shared_ptr<RKTURLSessionDataTask> start(bool isRefresh = false) {
        return gitHub->updateOAuth2AccessTokenWithCredentials(
            credentials, isRefresh,
            [this](std::optional<RKTError> error) { outcomes.push_back(std::move(error)); });
    }
    bool runUntilOutcomes(std::size_t count = 1) {
        return runMainQueueUntil([&] { return outcomes.size() >= count; });
    }
    /// From start to end; what the handler received.
    std::optional<RKTError> update(bool isRefresh = false) {
        start(isRefresh);
        EXPECT_TRUE(runUntilOutcomes());
        return outcomes.empty() ? std::nullopt : outcomes.back();
    }
    /// After this, whatever was on its way has run.
    static void settle() {
        drain(*RKTURLSession::sharedSession()->delegateQueue());
        while (RKTMainQueue::drain() > 0) {
        }
    }
    void expectUntouched() const { EXPECT_TRUE(sameProperties(*credentials, *filledSignIn())); }
    void expectCancelledOnce() {
        ASSERT_TRUE(runUntilOutcomes());
        settle();
        ASSERT_EQ(outcomes.size(), 1U);
        ASSERT_TRUE(outcomes[0]);
        EXPECT_EQ(outcomes[0]->domain(), RKTError::NSURLErrorDomain);
        EXPECT_EQ(outcomes[0]->code(), RKTError::NSURLErrorCancelled);
        expectUntouched();
    }
    void answerWith(const std::string& contentType, const std::string& body,
                    unsigned status = 200) {
        Answer answer;
        answer.status = status;
        answer.body = body;
        if (!contentType.empty()) answer.headers.add("Content-Type", contentType);
        origin.server.script({.host = "github.com"}, answer);
    }
    void answerWithToken() { answerWith("application/json", R"({"access_token":"new-token"})"); }

    /// Signs octavia in at the emulated GitHub, as a browser would; puts the code into the record.
    void signIn(const std::string& client = "demo-client",
                const std::string& secret = "demo-secret") {
        credentials->setOAuthClientID(client);
        credentials->setOAuthClientSecret(secret);
        const auto url = gitHub->OAuth2AuthorizeURLForCredentials(*credentials).value();
        RKTURLRequest request(url);
        request.setHTTPMethod("POST");
        request.setHTTPBody("login=octavia&decision=allow");
        // The redirect's scheme is the application's own, so that loading ends there.
        const auto loaded = origin.load(request);
        const auto location = loaded.response->valueForHTTPHeaderField("Location").value_or("");
        std::optional<RKTError> error;
        ASSERT_TRUE(gitHub->updateCredentials(*credentials, RKTURL::URLWithString(location).value(),
                                              &error));
        ASSERT_TRUE(credentials->OAuthCode());
    }
};

TEST_F(OAuth2TokenUpdate, ExchangesTheCodeOfASignIn) {
    signIn();
    EXPECT_EQ(update(), std::nullopt);
    EXPECT_THAT(credentials->token(), Optional(testing::StartsWith("gho_")));
    EXPECT_EQ(credentials->refreshToken(), std::nullopt);
    EXPECT_THAT(credentials->expiryDate(), Optional(RKTDateDistantFuture()));
    EXPECT_EQ(credentials->credentialType(), RKTServiceCredentialTypeOAuth2);
}

TEST_F(OAuth2TokenUpdate, RefreshesAnExpiringToken) {
    signIn("demo-client-expiring", "demo-secret-expiring");
    ASSERT_EQ(update(), std::nullopt);
    const auto first = credentials->token();
    const auto refreshToken = credentials->refreshToken();
    const auto inEightHours =
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) +
        std::chrono::hours(8);
    EXPECT_LE(credentials->expiryDate().value(), inEightHours + std::chrono::seconds(1));
    EXPECT_GE(credentials->expiryDate().value(), inEightHours - std::chrono::minutes(1));

    credentials->setOAuthCode(refreshToken);
    outcomes.clear();
    EXPECT_EQ(update(true), std::nullopt);
    EXPECT_NE(credentials->token(), first);
    EXPECT_NE(credentials->refreshToken(), refreshToken);
    EXPECT_EQ(credentials->OAuthCode(), refreshToken);
}

TEST_F(OAuth2TokenUpdate, AUsedCodeIsTheProvidersErrorAndChangesNothing) {
    signIn();
    ASSERT_EQ(update(), std::nullopt);
    const auto token = credentials->token();
    outcomes.clear();
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2Unknown);
    EXPECT_EQ(error->localizedDescription(), "The+code+passed+is+incorrect+or+expired.");
    EXPECT_EQ(credentials->token(), token);
}

// What is sent

TEST_F(OAuth2TokenUpdate, SendsTheFormAndNoHeaderOfItsOwnButTheMediaType) {
    answerWithToken();
    ASSERT_EQ(update(), std::nullopt);
    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].target, tokenPath);
    EXPECT_EQ(requests[0].authority, "github.com");
    EXPECT_TRUE(requests[0].tls);
    EXPECT_EQ(requests[0].headers.all("Content-Type"),
              std::vector<std::string>{"application/x-www-form-urlencoded"});
    EXPECT_EQ(requests[0].headers.get("Authorization"), std::nullopt);
    EXPECT_THAT(requests[0].headers.get("Accept").value_or("*/*"), "*/*");
    EXPECT_THAT(
        emulator::parseQuery(requests[0].body),
        testing::UnorderedElementsAre(
            emulator::QueryItem{"grant_type", "authorization_code"},
            emulator::QueryItem{"code", "old-code"}, emulator::QueryItem{"client_id", "a-client"},
            emulator::QueryItem{"client_secret", "client-secret"},
            emulator::QueryItem{"redirect_uri", "myapp://oauth/callback"}));
}

TEST_F(OAuth2TokenUpdate, TakesTheRecordAsItIsWhenItStarts) {
    answerWithToken();
    auto hold = origin.server.hold({});
    start();
    credentials->setOAuthCode("later-code");
    ASSERT_TRUE(hold.waitUntilReached());
    EXPECT_THAT(origin.server.requests()[0].body, testing::HasSubstr("code=old-code"));
    hold.release();
    ASSERT_TRUE(runUntilOutcomes());
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("later-code")));
}

TEST_F(OAuth2TokenUpdate, TakesNoRecordForOneWithNothingSet) {
    answerWithToken();
    gitHub->updateOAuth2AccessTokenWithCredentials(
        nullptr, true, [this](auto error) { outcomes.push_back(std::move(error)); });
    ASSERT_TRUE(runUntilOutcomes());
    EXPECT_EQ(outcomes[0], std::nullopt);
    EXPECT_EQ(origin.server.requests()[0].body, "grant_type=refresh_token");
}

// The main queue

TEST_F(OAuth2TokenUpdate, WritesTheRecordAndCallsTheHandlerOnTheMainQueueOnly) {
    answerWithToken();
    const auto task = start();
    EXPECT_NE(task->state(), State::Suspended);
    ASSERT_TRUE(waitForMainQueue());
    EXPECT_EQ(task->state(), State::Completed);
    expectUntouched();
    EXPECT_TRUE(outcomes.empty());
    EXPECT_EQ(RKTMainQueue::drain(), 1U);
    EXPECT_EQ(outcomes, std::vector{std::optional<RKTError>()});
    EXPECT_THAT(credentials->token(), Optional(std::string("new-token")));
}

TEST_F(OAuth2TokenUpdate, TheHandlerFindsTheRecordWritten) {
    answerWithToken();
    std::optional<std::string> token;
    std::thread::id thread;
    gitHub->updateOAuth2AccessTokenWithCredentials(credentials, false, [&](auto) {
        token = credentials->token();
        thread = std::this_thread::get_id();
    });
    ASSERT_TRUE(runMainQueueUntil([&] { return token.has_value(); }));
    EXPECT_EQ(token, "new-token");
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(OAuth2TokenUpdate, GoesThroughTheApplicationsExecutor) {
    answerWithToken();
    Awaited<RKTMainQueue::Task> received;
    RKTMainQueue::setExecutor([&](RKTMainQueue::Task task) { received.put(std::move(task)); });
    start();
    const auto task = received.first();
    expectUntouched();
    task();
    EXPECT_EQ(outcomes.size(), 1U);
    EXPECT_THAT(credentials->token(), Optional(std::string("new-token")));
}

TEST_F(OAuth2TokenUpdate, AnEmptyHandlerIsAllowed) {
    answerWithToken();
    gitHub->updateOAuth2AccessTokenWithCredentials(credentials, false, nullptr);
    ASSERT_TRUE(runMainQueueUntil([&] { return credentials->token() == "new-token"; }));
}

TEST_F(OAuth2TokenUpdate, AHandlerMayDropTheRecord) {
    answerWithToken();
    const std::weak_ptr<RKTServiceCredentials> alive = credentials;
    bool ran = false;
    gitHub->updateOAuth2AccessTokenWithCredentials(
        credentials, false, [this, &alive, &ran](auto error) {
            EXPECT_EQ(error, std::nullopt);
            credentials.reset();
            EXPECT_FALSE(alive.expired());  // the update's own reference goes after the handler
            ran = true;
        });
    ASSERT_TRUE(runMainQueueUntil([&] { return ran; }));
    EXPECT_TRUE(alive.expired());
}

TEST_F(OAuth2TokenUpdate, NobodyNeedsToHoldRecordOrTask) {
    answerWithToken();
    auto hold = origin.server.hold({});
    std::weak_ptr<RKTServiceCredentials> alive = credentials;
    start();
    credentials.reset();
    ASSERT_TRUE(hold.waitUntilReached());
    hold.release();
    ASSERT_TRUE(runUntilOutcomes());
    EXPECT_EQ(outcomes[0], std::nullopt);
    EXPECT_TRUE(alive.expired());
}

TEST_F(OAuth2TokenUpdate, AHandlerMayStartTheNextUpdate) {
    answerWithToken();
    gitHub->updateOAuth2AccessTokenWithCredentials(credentials, false,
                                                   [this](auto) { start(true); });
    ASSERT_TRUE(runUntilOutcomes());
    EXPECT_EQ(outcomes[0], std::nullopt);
    EXPECT_EQ(origin.server.requests().size(), 2U);
}

TEST_F(OAuth2TokenUpdate, TheHandlerIsDestroyedOnTheMainQueue) {
    struct Witness {
        std::thread::id* destroyed;
        ~Witness() { *destroyed = std::this_thread::get_id(); }
    };
    answerWithToken();
    std::thread::id destroyed;
    bool ran = false;
    gitHub->updateOAuth2AccessTokenWithCredentials(
        credentials, false,
        [witness = std::make_shared<Witness>(&destroyed), &ran](auto) { ran = true; });
    ASSERT_TRUE(runMainQueueUntil([&] { return ran; }));
    EXPECT_EQ(destroyed, std::this_thread::get_id());
}

TEST_F(OAuth2TokenUpdate, TwoRefreshesOfOneRecordEndEachOnceAndOneWins) {
    signIn("demo-client-expiring", "demo-secret-expiring");
    ASSERT_EQ(update(), std::nullopt);
    const auto first = credentials->token();
    credentials->setOAuthCode(credentials->refreshToken());
    outcomes.clear();

    auto hold = origin.server.hold({.path = tokenPath});
    start(true);
    start(true);
    ASSERT_TRUE(hold.waitUntilReached(2));
    hold.release();
    ASSERT_TRUE(runUntilOutcomes(2));
    settle();

    // The provider gives for a refresh token once: the other one is told so, and changes nothing.
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_EQ(std::ranges::count(outcomes, std::optional<RKTError>()), 1);
    for (const auto& error : outcomes) {
        if (error) {
            EXPECT_EQ(error->code(), RKTServiceErrorOAuth2Unknown);
        }
    }
    EXPECT_NE(credentials->token(), first);
    credentials->setOAuthCode(credentials->refreshToken());
    outcomes.clear();
    EXPECT_EQ(update(true), std::nullopt);
}

// Cancelling

TEST_F(OAuth2TokenUpdate, CancelledAtOnceTouchesNothing) {
    answerWithToken();
    start()->cancel();
    expectCancelledOnce();
}

TEST_F(OAuth2TokenUpdate, CancelledBeforeTheAnswerTouchesNothing) {
    answerWithToken();
    auto hold = origin.server.hold({});
    const auto task = start();
    ASSERT_TRUE(hold.waitUntilReached());
    task->cancel();
    expectCancelledOnce();
}

TEST_F(OAuth2TokenUpdate, CancelledDuringTheAnswerTouchesNothing) {
    answerWithToken();
    auto hold = origin.server.hold({}, HoldStage::InBody);
    const auto task = start();
    ASSERT_TRUE(hold.waitUntilReached());
    task->cancel();
    expectCancelledOnce();
}

TEST_F(OAuth2TokenUpdate, CancelledWhileTheAnswerWaitsInTheMainQueueCountsTheAnswer) {
    answerWithToken();
    const auto task = start();
    ASSERT_TRUE(waitForMainQueue());
    task->cancel();
    ASSERT_TRUE(runUntilOutcomes());
    settle();
    EXPECT_EQ(outcomes, std::vector{std::optional<RKTError>()});
    EXPECT_THAT(credentials->token(), Optional(std::string("new-token")));
}

TEST_F(OAuth2TokenUpdate, CancelledByOrAfterItsHandlerDoesNothing) {
    answerWithToken();
    std::shared_ptr<RKTURLSessionDataTask> task;
    task = gitHub->updateOAuth2AccessTokenWithCredentials(credentials, false, [&](auto error) {
        outcomes.push_back(std::move(error));
        task->cancel();
    });
    ASSERT_TRUE(runUntilOutcomes());
    task->cancel();
    settle();
    EXPECT_EQ(outcomes, std::vector{std::optional<RKTError>()});
    EXPECT_EQ(task->state(), State::Completed);
}

// Answers

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
    origin.server.script({.path = tokenPath}, redirect);
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
