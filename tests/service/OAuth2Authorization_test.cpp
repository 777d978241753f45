#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTService.h"
#include "tests/helpers/SignIn.h"

namespace {

using testing::Optional;

class OAuth2AuthorizeURL : public testing::Test {
protected:
    SignInServiceClass service;
    std::shared_ptr<RKTServiceCredentials> credentials = emptySignIn();

    std::string url() const {
        const auto made = service.OAuth2AuthorizeURLForCredentials(*credentials);
        return made ? made->absoluteString() : "no URL";
    }
    std::string query() const { return url().substr(url().find('?') + 1); }
};

TEST_F(OAuth2AuthorizeURL, HasTheClientAndTheKindOfResponseWhenNothingElseIsSet) {
    credentials->setOAuthClientID("abc");
    EXPECT_EQ(url(), "https://git.example.com/authorize?client_id=abc&response_type=code");
}

TEST_F(OAuth2AuthorizeURL, HasABareClientItemWhenThereIsNoClient) {
    EXPECT_EQ(query(), "client_id&response_type=code");
}

TEST_F(OAuth2AuthorizeURL, HasAnEmptyClientValueWhenTheClientIsTheEmptyText) {
    credentials->setOAuthClientID("");
    EXPECT_EQ(query(), "client_id=&response_type=code");
}

TEST_F(OAuth2AuthorizeURL, OrdersItsItemsAndEndsWithTheAdaptersOwn) {
    service.additionalItems = {{"login", "octavia"}, {"flag", std::nullopt}, {"empty", ""}};
    EXPECT_EQ(
        (credentials = filledSignIn(), query()),
        "client_id=a-client&response_type=code&redirect_uri=myapp://oauth/callback&scope=repo,user"
        "&state=a-state&login=octavia&flag&empty=");
}

TEST_F(OAuth2AuthorizeURL, TakesAnEmptyListOfAdditionalItemsAsNone) {
    service.additionalItems.emplace();
    EXPECT_EQ(query(), "client_id&response_type=code");
}

TEST_F(OAuth2AuthorizeURL, HasAnEmptyScopeValueForAnEmptyListOfScopes) {
    credentials->setOAuthScopes(std::vector<std::string>());
    EXPECT_EQ(query(), "client_id&response_type=code&scope=");
}

TEST_F(OAuth2AuthorizeURL, JoinsScopesWithCommas) {
    credentials->setOAuthScopes({{"repo", "user"}});
    EXPECT_EQ(query(), "client_id&response_type=code&scope=repo,user");
    credentials->setOAuthScopes({{"repo"}});
    EXPECT_EQ(query(), "client_id&response_type=code&scope=repo");
    credentials->setOAuthScopes({{"", "b c", ""}});
    EXPECT_EQ(query(), "client_id&response_type=code&scope=,b%20c,");
}

TEST_F(OAuth2AuthorizeURL, HasAnEmptyStateValueWhenTheStateIsTheEmptyText) {
    credentials->setOAuthState("");
    EXPECT_EQ(query(), "client_id&response_type=code&state=");
}

TEST_F(OAuth2AuthorizeURL, KeepsARedirectURLUnescapedButForWhatWouldBreakTheItems) {
    credentials->setOAuthRedirectURL(RKTURL::URLWithString("myapp://oauth/callback?a=1&b=%20#c"));
    EXPECT_EQ(query(),
              "client_id&response_type=code"
              "&redirect_uri=myapp://oauth/callback?a%3D1%26b%3D%2520%23c");
}

TEST_F(OAuth2AuthorizeURL, EncodesAsAQueryDoes) {
    credentials->setOAuthClientID("a b%\"é&=+:/?@,;");
    EXPECT_EQ(query(), "client_id=a%20b%25%22%C3%A9%26%3D+:/?@,;&response_type=code");
}

TEST_F(OAuth2AuthorizeURL, ReplacesTheEndpointsOwnQuery) {
    service.authorizeEndpoint = "https://user@git.example.com:8443/a/b?tenant=1#part";
    EXPECT_EQ(url(), "https://user@git.example.com:8443/a/b?client_id&response_type=code#part");
}

TEST_F(OAuth2AuthorizeURL, IsNothingWhenTheEndpointHasNoURLsStructure) {
    service.authorizeEndpoint = "https://git.example.com:80a/authorize";
    EXPECT_EQ(service.OAuth2AuthorizeURLForCredentials(*credentials), std::nullopt);
}

TEST_F(OAuth2AuthorizeURL, ChangesNothingInTheRecord) {
    credentials = filledSignIn();
    static_cast<void>(url());
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

class OAuth2AuthorizeResponse : public testing::Test {
protected:
    SignInServiceClass service;
    std::shared_ptr<RKTServiceCredentials> credentials = filledSignIn();
    std::optional<RKTError> error;

    bool update(const std::string& response) {
        return service.updateCredentials(*credentials, RKTURL::URLWithString(response).value(),
                                         &error);
    }
    bool updateWithQuery(const std::string& query) {
        return update("myapp://oauth/callback?" + query);
    }
    void expectRefused(std::int64_t code, const std::string& description) const {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), RKTKorvoGitServiceErrorDomain);
        EXPECT_EQ(error->code(), code);
        EXPECT_EQ(error->localizedDescription(), description);
        EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
    }
    void expectMismatch() const {
        expectRefused(2099, "Could not verify the authenticity of the OAuth2 response.");
    }
};

TEST_F(OAuth2AuthorizeResponse, StoresTheCodeAndTouchesNothingElse) {
    EXPECT_TRUE(updateWithQuery("code=new%20code&state=a-state"));
    EXPECT_FALSE(error);
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("new code")));
    credentials->setOAuthCode("old-code");
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

TEST_F(OAuth2AuthorizeResponse, LeavesAPlusInTheCode) {
    EXPECT_TRUE(updateWithQuery("code=a+b&state=a-state"));
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("a+b")));
}

TEST_F(OAuth2AuthorizeResponse, FailsWithoutTheState) {
    EXPECT_FALSE(updateWithQuery("code=c"));
    expectMismatch();
}

TEST_F(OAuth2AuthorizeResponse, FailsWithAStateThatHasNoValue) {
    EXPECT_FALSE(updateWithQuery("code=c&state=a-state&state"));
    expectMismatch();
}

TEST_F(OAuth2AuthorizeResponse, ComparesTheStateWithRegardToCase) {
    EXPECT_FALSE(updateWithQuery("code=c&state=A-STATE"));
    expectMismatch();
}

TEST_F(OAuth2AuthorizeResponse, ComparesTheWholeState) {
    EXPECT_FALSE(updateWithQuery("code=c&state=a-state%00"));
    expectMismatch();
    EXPECT_FALSE(updateWithQuery("code=c&state=a-stat"));
    expectMismatch();
}

TEST_F(OAuth2AuthorizeResponse, ComparesTheLaterOfTwoStates) {
    EXPECT_TRUE(updateWithQuery("state=forged&code=c&state=a-state"));
    EXPECT_FALSE(updateWithQuery("state=a-state&code=d&state=forged"));
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("c")));
}

TEST_F(OAuth2AuthorizeResponse, WithoutAStateInTheRecordChecksNone) {
    credentials->setOAuthState(std::nullopt);
    EXPECT_TRUE(updateWithQuery("code=c&state=whatever"));
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("c")));
}

TEST_F(OAuth2AuthorizeResponse, AnEmptyStateInTheRecordMustComeBackEmpty) {
    credentials->setOAuthState("");
    EXPECT_FALSE(updateWithQuery("code=c"));
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2StateMismatch);
    EXPECT_FALSE(updateWithQuery("code=c&state=x"));
    EXPECT_TRUE(updateWithQuery("code=c&state="));
}

TEST_F(OAuth2AuthorizeResponse, AWrongStateOutweighsTheProvidersError) {
    EXPECT_FALSE(updateWithQuery("error=access_denied&state=forged"));
    expectMismatch();
}

TEST_F(OAuth2AuthorizeResponse, ReportsTheProvidersError) {
    EXPECT_FALSE(updateWithQuery(
        "error=access_denied&error_description=The%20user+said%20no&code=c&state=a-state"
        "&error_uri=https://docs.example.com/denied"));
    expectRefused(2003, "The user+said no");
    EXPECT_EQ(error->URL(), RKTURL::URLWithString("https://docs.example.com/denied"));
}

TEST_F(OAuth2AuthorizeResponse, AnErrorWithoutAValueIsNone) {
    EXPECT_TRUE(updateWithQuery("code=c&state=a-state&error=access_denied&error"));
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("c")));
}

TEST_F(OAuth2AuthorizeResponse, AnErrorWithAnEmptyValueIsAnUnknownOne) {
    EXPECT_FALSE(updateWithQuery("code=c&state=a-state&error="));
    expectRefused(2000, "An unknown OAuth2 error occurred.");
}

TEST_F(OAuth2AuthorizeResponse, WithoutAQueryClearsTheCodeWhenNoStateIsAskedFor) {
    credentials->setOAuthState(std::nullopt);
    EXPECT_TRUE(update("myapp://oauth/callback"));
    EXPECT_EQ(credentials->OAuthCode(), std::nullopt);
}

TEST_F(OAuth2AuthorizeResponse, WithoutACodeClearsTheCode) {
    EXPECT_TRUE(updateWithQuery("state=a-state"));
    EXPECT_EQ(credentials->OAuthCode(), std::nullopt);
}

TEST_F(OAuth2AuthorizeResponse, LooksAtTheQueryAlone) {
    EXPECT_TRUE(update("https://elsewhere.example.com/?code=c&state=a-state#error=server_error"));
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("c")));
    EXPECT_FALSE(update("myapp://oauth/callback#code=c&state=a-state"));
}

TEST_F(OAuth2AuthorizeResponse, WithoutAURLsStructureHasNoItems) {
    EXPECT_FALSE(update("https://localhost:80a/?code=c&state=a-state"));
    EXPECT_EQ(error->code(), RKTServiceErrorOAuth2StateMismatch);
    credentials->setOAuthState(std::nullopt);
    EXPECT_TRUE(update("https://localhost:80a/?code=c&state=a-state"));
    EXPECT_EQ(credentials->OAuthCode(), std::nullopt);
}

TEST_F(OAuth2AuthorizeResponse, AnswersTheSameWhenNobodyWantsTheReason) {
    const auto refused = RKTURL::URLWithString("myapp://x?error=server_error&state=a-state");
    EXPECT_FALSE(service.updateCredentials(*credentials, *refused));
    const auto forged = RKTURL::URLWithString("myapp://x?code=c&state=forged");
    EXPECT_FALSE(service.updateCredentials(*credentials, *forged));
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

TEST_F(OAuth2AuthorizeResponse, LeavesTheReasonAloneWhenItSucceeds) {
    error = RKTError("a domain", 1);
    EXPECT_TRUE(updateWithQuery("code=c&state=a-state"));
    EXPECT_EQ(error, RKTError("a domain", 1));
}

TEST_F(OAuth2AuthorizeResponse, TellsNoSecretInItsErrors) {
    credentials->setOAuthState("the-expected-state");
    EXPECT_FALSE(updateWithQuery("code=the-code&state=the-forged-state"));
    for (const auto& [key, value] : error->userInfo()) {
        const auto* text = std::get_if<std::string>(&value);
        ASSERT_TRUE(text);
        EXPECT_THAT(*text, testing::Not(testing::HasSubstr("the-")));
    }
}

class OAuth2AccessError : public testing::Test {
protected:
    SignInServiceClass service;
    using Object = RKTServiceClass::OAuth2ResponseObject;

    RKTError error(const Object& object) const {
        return service.OAuth2AccessErrorWithResponseObject(object).value();
    }
};

TEST_F(OAuth2AccessError, HasACodeForEachOfTheSevenErrors) {
    EXPECT_EQ(error({{"error", "invalid_request"}}).code(), 2001);
    EXPECT_EQ(error({{"error", "unauthorized_client"}}).code(), 2002);
    EXPECT_EQ(error({{"error", "access_denied"}}).code(), 2003);
    EXPECT_EQ(error({{"error", "unsupported_response_type"}}).code(), 2004);
    EXPECT_EQ(error({{"error", "invalid_scope"}}).code(), 2005);
    EXPECT_EQ(error({{"error", "server_error"}}).code(), 2006);
    EXPECT_EQ(error({{"error", "temporarily_unavailable"}}).code(), 2007);
}

TEST_F(OAuth2AccessError, IsUnknownForEverythingElse) {
    for (const char* other : {"foo", "", "Access_Denied", " access_denied", "access_denied ",
                              "invalid_grant", "bad_verification_code"}) {
        EXPECT_EQ(error({{"error", other}}).code(), RKTServiceErrorOAuth2Unknown) << other;
    }
}

TEST_F(OAuth2AccessError, IsInTheLibrarysDomain) {
    EXPECT_EQ(error({{"error", "foo"}}).domain(), RKTKorvoGitServiceErrorDomain);
}

TEST_F(OAuth2AccessError, HasTheProvidersDescription) {
    EXPECT_EQ(error({{"error", "foo"}, {"error_description", "Words."}}).localizedDescription(),
              "Words.");
    const auto empty = error({{"error", "foo"}, {"error_description", ""}});
    EXPECT_EQ(std::get<std::string>(empty.userInfo().at(RKTError::NSLocalizedDescriptionKey)), "");
}

TEST_F(OAuth2AccessError, HasTheFallbackDescriptionForKnownCodesToo) {
    EXPECT_EQ(error({{"error", "access_denied"}}).localizedDescription(),
              "An unknown OAuth2 error occurred.");
}

TEST_F(OAuth2AccessError, HasThePageThatTheProviderNames) {
    const auto made = error({{"error", "foo"}, {"error_uri", "https://docs.example.com/#a"}});
    EXPECT_EQ(made.URL(), RKTURL::URLWithString("https://docs.example.com/#a"));
}

TEST_F(OAuth2AccessError, HasNoPageWhenItsAddressIsNoURL) {
    const auto made = error({{"error", "foo"}, {"error_uri", "not a URL"}});
    EXPECT_FALSE(made.userInfo().contains(RKTError::NSURLErrorKey));
    EXPECT_EQ(made.userInfo().size(), 1U);
}

TEST_F(OAuth2AccessError, IsNothingWithoutAnError) {
    EXPECT_EQ(service.OAuth2AccessErrorWithResponseObject({}), std::nullopt);
    EXPECT_EQ(service.OAuth2AccessErrorWithResponseObject(
                  {{"error_description", "Words."}, {"Error", "access_denied"}}),
              std::nullopt);
}

TEST_F(OAuth2AccessError, IsAnsweredByTheAbstractClassToo) {
    const auto made =
        RKTService::serviceClass()->OAuth2AccessErrorWithResponseObject({{"error", "foo"}});
    ASSERT_TRUE(made);
    EXPECT_EQ(made->code(), 2000);
}

TEST(OAuth2Misuse, TheAbstractClassMakesNoAuthorizeURL) {
    EXPECT_EQ(misuse([] {
                  RKTService::serviceClass()->OAuth2AuthorizeURLForCredentials(*filledSignIn());
              }),
              "OAuth2AuthorizeURLForCredentials: should only be invoked on a concrete service "
              "subclass.");
}

TEST(OAuth2Misuse, TheAbstractClassVerifiesNoRedirect) {
    const auto credentials = filledSignIn();
    const auto response = RKTURL::URLWithString("myapp://x?code=c&state=a-state").value();
    EXPECT_EQ(
        misuse([&] { RKTService::serviceClass()->updateCredentials(*credentials, response); }),
        "updateCredentials:withOAuth2AuthorizeResponseURL:error: should only be invoked on a "
        "concrete service subclass.");
    EXPECT_TRUE(sameProperties(*credentials, *filledSignIn()));
}

TEST(OAuth2Misuse, AnAdapterWithoutTheHookMakesNoAuthorizeURL) {
    const struct : RKTServiceClass {
    } plain;
    EXPECT_EQ(misuse([&] { plain.OAuth2AuthorizeURLForCredentials(*filledSignIn()); }),
              "OAuth2AuthorizeEndpointForCredentials: must be overridden by subclasses.");
}

TEST(OAuth2Misuse, AnAdapterWithoutTheHookStillVerifiesRedirects) {
    const struct : RKTServiceClass {
    } plain;
    const auto credentials = filledSignIn();
    EXPECT_TRUE(plain.updateCredentials(
        *credentials, RKTURL::URLWithString("myapp://x?code=c&state=a-state").value()));
    EXPECT_THAT(credentials->OAuthCode(), Optional(std::string("c")));
}

/// The service types of the library's own adapters that offer the sign-in.
bool offersSignIn(const std::string& serviceType) {
    return serviceType == "GitHub" || serviceType == "GitHubEnterprise" ||
           serviceType == "Bitbucket";
}

TEST(OAuth2OfTheAdapters, TheOnesThatOfferItAddTheUserAsTheLastItem) {
    const auto credentials = emptySignIn();
    credentials->setOAuthClientID("abc");
    for (const auto& [type, serviceClass] : RKTService::classesByServiceType()) {
        if (!offersSignIn(type)) continue;
        credentials->setUser(std::nullopt);
        const auto plain =
            serviceClass->OAuth2AuthorizeURLForCredentials(*credentials)->absoluteString();
        EXPECT_THAT(plain, testing::EndsWith("/authorize?client_id=abc&response_type=code"));
        credentials->setUser("octavia");
        EXPECT_EQ(serviceClass->OAuth2AuthorizeURLForCredentials(*credentials)->absoluteString(),
                  plain + "&login=octavia");
    }
}

TEST(OAuth2OfTheAdapters, TheOthersRaiseTheHooksMisuse) {
    std::size_t others = 0;
    for (const auto& [type, serviceClass] : RKTService::classesByServiceType()) {
        if (offersSignIn(type)) continue;
        ++others;
        const auto* adapter = serviceClass;
        EXPECT_EQ(misuse([&] { adapter->OAuth2AuthorizeURLForCredentials(*filledSignIn()); }),
                  "OAuth2AuthorizeEndpointForCredentials: must be overridden by subclasses.")
            << type;
        EXPECT_EQ(
            misuse([&] { adapter->OAuth2AccessTokenRequestForCredentials(*filledSignIn(), true); }),
            "OAuth2AccessTokenEndpointForCredentials: must be overridden by subclasses.")
            << type;
    }
    EXPECT_EQ(others, 5U);
}

}  // namespace
