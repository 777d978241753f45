// Token updates against an emulated provider.

#pragma once

#include <gtest/gtest.h>

#include "KorvoGitService/RKTGitHubService.h"
#include "tests/helpers/Loading.h"
#include "tests/helpers/MainThread.h"
#include "tests/helpers/SignIn.h"

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
        emulator::Answer answer;
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
