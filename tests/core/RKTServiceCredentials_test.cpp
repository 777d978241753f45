#include "KorvoGitService/RKTServiceCredentials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "KorvoGitService/RKTException.h"

namespace {

using testing::Optional;

std::shared_ptr<RKTServiceCredentials> filledCredentials() {
    auto credentials = std::make_shared<RKTServiceCredentials>("GitHub", "OAuth2");
    credentials->setURL(RKTURL::URLWithString("https://github.com"));
    credentials->setUser("octocat");
    credentials->setToken("a token");
    credentials->setRefreshToken("a refresh token");
    credentials->setExpiryDate(RKTDateDistantFuture());
    credentials->setOAuthClientID("a client");
    credentials->setOAuthClientSecret("a secret");
    credentials->setOAuthCode("a code");
    credentials->setOAuthScopes({{"repo", "user"}});
    credentials->setOAuthState("a state");
    credentials->setOAuthRedirectURL(RKTURL::URLWithString("myapp://oauth/callback"));
    return credentials;
}

void expectEqual(const RKTServiceCredentials& one, const RKTServiceCredentials& other) {
    EXPECT_EQ(one.serviceType(), other.serviceType());
    EXPECT_EQ(one.credentialType(), other.credentialType());
    EXPECT_EQ(one.URL(), other.URL());
    EXPECT_EQ(one.user(), other.user());
    EXPECT_EQ(one.token(), other.token());
    EXPECT_EQ(one.refreshToken(), other.refreshToken());
    EXPECT_EQ(one.expiryDate(), other.expiryDate());
    EXPECT_EQ(one.OAuthClientID(), other.OAuthClientID());
    EXPECT_EQ(one.OAuthClientSecret(), other.OAuthClientSecret());
    EXPECT_EQ(one.OAuthCode(), other.OAuthCode());
    EXPECT_EQ(one.OAuthScopes(), other.OAuthScopes());
    EXPECT_EQ(one.OAuthState(), other.OAuthState());
    EXPECT_EQ(one.OAuthRedirectURL(), other.OAuthRedirectURL());
}

TEST(RKTServiceCredentials, NamesServiceTypes) {
    EXPECT_STREQ(RKTServiceTypeGitHub, "GitHub");
    EXPECT_STREQ(RKTServiceTypeGitHubEnterprise, "GitHubEnterprise");
    EXPECT_STREQ(RKTServiceTypeGitLab, "GitLab");
    EXPECT_STREQ(RKTServiceTypeGitLabSelfHosted, "GitLabSelfHosted");
    EXPECT_STREQ(RKTServiceTypeBitbucket, "Bitbucket");
    EXPECT_STREQ(RKTServiceTypeBitbucketServer, "BitbucketServer");
    EXPECT_STREQ(RKTServiceTypeAzureDevOps, "AzureDevOps");
    EXPECT_STREQ(RKTServiceTypeAzureDevOpsServer, "AzureDevOpsServer");
}

TEST(RKTServiceCredentials, NamesCredentialTypes) {
    EXPECT_STREQ(RKTServiceCredentialTypeToken, "Token");
    EXPECT_STREQ(RKTServiceCredentialTypeOAuth2, "OAuth2");
    EXPECT_STREQ(RKTServiceCredentialTypeBasic, "Basic");
}

TEST(RKTServiceCredentials, HasNoPlainInitializer) {
    try {
        const RKTServiceCredentials credentials;
        FAIL() << "made without types";
    } catch (const RKTInvalidArgumentException& misuse) {
        EXPECT_STREQ(misuse.what(),
                     "Must be initialized using -initWithServiceType:credentialType:");
    }
}

TEST(RKTServiceCredentials, StartsWithItsTypesOnly) {
    const RKTServiceCredentials credentials("GitLab", std::nullopt);
    EXPECT_THAT(credentials.serviceType(), Optional(std::string("GitLab")));
    EXPECT_EQ(credentials.credentialType(), std::nullopt);
    EXPECT_EQ(credentials.URL(), std::nullopt);
    EXPECT_EQ(credentials.user(), std::nullopt);
    EXPECT_EQ(credentials.token(), std::nullopt);
    EXPECT_EQ(credentials.refreshToken(), std::nullopt);
    EXPECT_EQ(credentials.expiryDate(), std::nullopt);
    EXPECT_EQ(credentials.OAuthClientID(), std::nullopt);
    EXPECT_EQ(credentials.OAuthClientSecret(), std::nullopt);
    EXPECT_EQ(credentials.OAuthCode(), std::nullopt);
    EXPECT_EQ(credentials.OAuthScopes(), std::nullopt);
    EXPECT_EQ(credentials.OAuthState(), std::nullopt);
    EXPECT_EQ(credentials.OAuthRedirectURL(), std::nullopt);
}

TEST(RKTServiceCredentials, CopiesEveryProperty) {
    const auto credentials = filledCredentials();
    const auto copy = credentials->copyWithZone();
    ASSERT_NE(copy, credentials);
    expectEqual(*copy, *filledCredentials());
}

TEST(RKTServiceCredentials, CopiesARecordThatHasItsTypesOnly) {
    const RKTServiceCredentials credentials("GitHub", "Token");
    expectEqual(*credentials.copyWithZone(), RKTServiceCredentials("GitHub", "Token"));
}

TEST(RKTServiceCredentials, KeepsScopesOfItsOwn) {
    const auto credentials = filledCredentials();
    std::optional<std::vector<std::string>> scopes = {{"repo"}};
    credentials->setOAuthScopes(scopes);
    const auto copy = credentials->copyWithZone();
    scopes->push_back("admin:org");
    EXPECT_THAT(credentials->OAuthScopes(), Optional(testing::ElementsAre("repo")));
    credentials->setOAuthScopes(scopes);
    EXPECT_THAT(copy->OAuthScopes(), Optional(testing::ElementsAre("repo")));
}

TEST(RKTServiceCredentials, IsClearedByNothing) {
    const auto credentials = filledCredentials();
    credentials->setServiceType(std::nullopt);
    credentials->setCredentialType(std::nullopt);
    credentials->setURL(std::nullopt);
    credentials->setUser(std::nullopt);
    credentials->setToken(std::nullopt);
    credentials->setRefreshToken(std::nullopt);
    credentials->setExpiryDate(std::nullopt);
    credentials->setOAuthClientID(std::nullopt);
    credentials->setOAuthClientSecret(std::nullopt);
    credentials->setOAuthCode(std::nullopt);
    credentials->setOAuthScopes(std::nullopt);
    credentials->setOAuthState(std::nullopt);
    credentials->setOAuthRedirectURL(std::nullopt);
    expectEqual(*credentials, RKTServiceCredentials(std::nullopt, std::nullopt));
}

class AccountCredentials : public RKTServiceCredentials {
public:
    using RKTServiceCredentials::RKTServiceCredentials;

    std::shared_ptr<RKTServiceCredentials> copyWithZone() const override {
        auto copy = std::make_shared<AccountCredentials>(serviceType(), credentialType());
        copyPropertiesTo(*copy);
        copy->account = account;
        return copy;
    }

    int account = 0;
};

TEST(RKTServiceCredentials, CopiesAsItsOwnClass) {
    AccountCredentials credentials("GitHub", "Token");
    credentials.account = 7;
    credentials.setUser("octocat");
    const RKTServiceCredentials& record = credentials;
    const auto copy = std::dynamic_pointer_cast<AccountCredentials>(record.copyWithZone());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->account, 7);
    expectEqual(*copy, credentials);
}

TEST(RKTServiceCredentials, NamesCredentialTypesForPeople) {
    EXPECT_THAT(RKTServiceCredentials::localizedNameForCredentialType("Token"),
                Optional(std::string("Personal Access Token")));
    EXPECT_THAT(RKTServiceCredentials::localizedNameForCredentialType("OAuth2"),
                Optional(std::string("OAuth Access Token")));
    EXPECT_THAT(RKTServiceCredentials::localizedNameForCredentialType("Basic"),
                Optional(std::string("Basic Auth")));
}

TEST(RKTServiceCredentials, HasNoNameForAnUnknownCredentialType) {
    for (const char* unknown : {"token", "OAUTH2", "Token ", ""}) {
        EXPECT_EQ(RKTServiceCredentials::localizedNameForCredentialType(unknown), std::nullopt)
            << unknown;
    }
    EXPECT_EQ(RKTServiceCredentials::localizedNameForCredentialType(std::nullopt), std::nullopt);
}

TEST(RKTServiceCredentials, NeverShowsAHalfWrittenProperty) {
    const std::string first(4096, 'a');
    const std::string second(4096, 'b');
    RKTServiceCredentials credentials("GitHub", "Token");
    credentials.setToken(first);
    std::latch start(3);
    const auto write = [&](const std::string& token) {
        start.arrive_and_wait();
        for (int round = 0; round < 2000; ++round) credentials.setToken(token);
    };
    const std::jthread one(write, std::cref(first));
    const std::jthread other(write, std::cref(second));
    start.arrive_and_wait();
    for (int round = 0; round < 2000; ++round) {
        const auto token = credentials.token();
        ASSERT_TRUE(token == first || token == second);
    }
}

}  // namespace
