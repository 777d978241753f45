// The token update from start to end: what is sent, the main queue, cancelling.

#include "tests/service/OAuth2TokenUpdate.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <thread>

#include "KorvoGitService/KorvoGitServiceErrors.h"

namespace {

using emulator::HoldStage;
using testing::Optional;
using State = RKTURLSessionDataTask::State;

constexpr const char* tokenPath = "/login/oauth/access_token";

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
    EXPECT_EQ(requests[0].headers.get("Accept"), std::nullopt);
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

}  // namespace
