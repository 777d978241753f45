#include "KorvoGitService/RKTBitbucketService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "tests/helpers/Adapters.h"

namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Optional;
using testing::Pair;

const RKTServiceClass& adapterClass() {
    return *RKTBitbucketService::serviceClass();
}

std::shared_ptr<RKTService> serviceAt(const std::optional<std::string>& url) {
    return serviceWith(credentialsFor("Bitbucket", url, "u", "t"));
}

std::map<std::string, std::string> queryOf(
    const std::shared_ptr<const RKTRepositoriesRequest>& request) {
    return listingQuery(serviceAt(std::nullopt), request);
}

TEST(RKTBitbucketServiceClass, ServesItsType) {
    EXPECT_EQ(RKTService::classForServiceType("Bitbucket"), &adapterClass());
    EXPECT_TRUE(isOfClass<RKTBitbucketService>(*serviceAt(std::nullopt)));
}

TEST(RKTBitbucketServiceClass, NamesItsTypeForPeople) {
    EXPECT_THAT(adapterClass().localizedNameForServiceType("Bitbucket"),
                Optional(std::string("Bitbucket Cloud")));
    EXPECT_EQ(adapterClass().localizedNameForServiceType("BitbucketServer"), std::nullopt);
}

TEST(RKTBitbucketServiceClass, HasADefaultAddressAndNeedsNoOther) {
    EXPECT_EQ(text(adapterClass().defaultURLForServiceType("Bitbucket")), "https://bitbucket.org");
    EXPECT_EQ(adapterClass().defaultURLForServiceType("BitbucketServer"), std::nullopt);
    EXPECT_FALSE(adapterClass().requiresCustomURLForServiceType("Bitbucket"));
}

TEST(RKTBitbucketServiceClass, TakesOAuth2AndPasswords) {
    for (const char* serviceType : {"Bitbucket", "other"}) {
        EXPECT_THAT(adapterClass().supportedCredentialTypesForServiceType(serviceType),
                    ElementsAre("OAuth2", "Basic"));
        EXPECT_EQ(adapterClass().personalAccessTokenHelpURLForServiceType(serviceType),
                  std::nullopt);
    }
}

TEST(RKTBitbucketServiceClass, SignsInAtThePublicServiceWhateverTheAddress) {
    RKTServiceCredentials credentials("Bitbucket", "OAuth2");
    credentials.setURL(RKTURL::URLWithString("https://git.example.com"));
    EXPECT_EQ(adapterClass().OAuth2AuthorizeEndpointForCredentials(credentials).absoluteString(),
              "https://bitbucket.org/site/oauth2/authorize");
    EXPECT_EQ(adapterClass().OAuth2AccessTokenEndpointForCredentials(credentials).absoluteString(),
              "https://bitbucket.org/site/oauth2/access_token");
}

TEST(RKTBitbucketServiceClass, SuggestsTheAccountToSignInWith) {
    RKTServiceCredentials credentials("Bitbucket", "OAuth2");
    EXPECT_THAT(adapterClass().OAuth2AuthorizeAdditionalParamtersForCredentials(credentials),
                Optional(IsEmpty()));
    credentials.setUser("octavia");
    credentials.setOAuthClientID("id");
    EXPECT_EQ(text(adapterClass().OAuth2AuthorizeURLForCredentials(credentials)),
              "https://bitbucket.org/site/oauth2/authorize"
              "?client_id=id&response_type=code&login=octavia");
}

TEST(RKTBitbucketService, IgnoresTheAccountsAddress) {
    for (const auto& url :
         {std::optional<std::string>(), std::optional<std::string>("https://x")}) {
        EXPECT_EQ(validationURL(*serviceAt(url)), "https://api.bitbucket.org/2.0/user");
    }
}

TEST(RKTBitbucketService, ListsGitRepositoriesOfWhichTheUserIsAMember) {
    EXPECT_EQ(listingURL(*serviceAt(std::nullopt)),
              "https://api.bitbucket.org/2.0/repositories?role=member&q=scm%20%3D%20%22git%22");
    EXPECT_THAT(queryOf(nullptr), ElementsAre(Pair("q", "scm = \"git\""), Pair("role", "member")));
}

TEST(RKTBitbucketService, SortsByWhatTheServiceKnows) {
    EXPECT_THAT(queryOf(sortedBy(2, 1)), Contains(Pair("sort", "name")));
    EXPECT_THAT(queryOf(sortedBy(3)), Contains(Pair("sort", "created_on")));
    EXPECT_THAT(queryOf(sortedBy(4)), Contains(Pair("sort", "updated_on")));
    for (const std::uint64_t sortKey : {0U, 1U, 5U, 6U}) {
        EXPECT_THAT(queryOf(sortedBy(sortKey, 2)), Not(Contains(Key("sort")))) << sortKey;
    }
}

TEST(RKTBitbucketService, MarksADescendingOrderInTheSortField) {
    EXPECT_THAT(queryOf(sortedBy(4, 2)), Contains(Pair("sort", "-updated_on")));
    EXPECT_THAT(queryOf(sortedBy(2, 2)), Contains(Pair("sort", "-name")));
    EXPECT_THAT(queryOf(sortedBy(2, 3)), Contains(Pair("sort", "name")));
}

TEST(RKTBitbucketService, FiltersByVisibilityInTheQuery) {
    EXPECT_EQ(queryOf(withVisibility("public")).at("q"), "scm = \"git\" AND is_private = false");
    EXPECT_EQ(queryOf(withVisibility("private")).at("q"), "scm = \"git\" AND is_private = true");
    EXPECT_EQ(queryOf(withVisibility("internal")).at("q"), "scm = \"git\"");
    EXPECT_EQ(queryOf(withVisibility("other")).at("q"), "scm = \"git\"");
}

TEST(RKTBitbucketService, HasNoFilterForStates) {
    EXPECT_EQ(queryOf(withState("closed")), queryOf(nullptr));
}

TEST(RKTBitbucketService, SendsPageAndCountUnderItsOwnNames) {
    const auto query = queryOf(pageOf(3, 50));
    EXPECT_EQ(query.at("page"), "3");
    EXPECT_EQ(query.at("pagelen"), "50");
    EXPECT_EQ(query.size(), 4U);
}

class RKTBitbucketServiceOnline : public AdapterTest {
protected:
    using AdapterTest::AdapterTest;
    std::shared_ptr<RKTServiceCredentials> credentials() const override {
        auto credentials =
            credentialsFor("Bitbucket", std::nullopt, "octavia", "demo-password-octavia");
        credentials->setCredentialType(RKTServiceCredentialTypeBasic);
        return credentials;
    }
    std::shared_ptr<RKTService> serviceOf(const std::string& login) const {
        const auto other = credentials();
        other->setUser(login);
        other->setToken("demo-password-" + login);
        return serviceWith(other);
    }
    json repository(const std::string& body) {
        const auto answer = emulator::jsonAnswer(200, R"({"values": [)" + body + "]}");
        return propertiesOf(*listed(answer)->results()->at(0));
    }
    json cloneAddresses(const std::string& entries) {
        json properties = repository(R"({"links": {"clone": )" + entries + "}}");
        properties.erase("visibility");
        return properties;
    }
};

TEST_F(RKTBitbucketServiceOnline, AcceptsAGoodPasswordAndAGoodToken) {
    EXPECT_EQ(validate(*service()), std::nullopt);
    EXPECT_EQ(lastRequest().authority, "api.bitbucket.org");
    EXPECT_EQ(lastRequest().target, "/2.0/user");
    EXPECT_THAT(lastRequest().headers.get("Accept"), Optional(std::string("application/json")));
    const auto signedIn = credentials();
    signedIn->setCredentialType(RKTServiceCredentialTypeOAuth2);
    signedIn->setToken("demo-token-octavia");
    EXPECT_EQ(validate(*serviceWith(signedIn)), std::nullopt);
}

TEST_F(RKTBitbucketServiceOnline, SignsByTheCredentialType) {
    EXPECT_THAT(authorization("OAuth2", "u", "p"), Optional(std::string("Bearer p")));
    EXPECT_THAT(authorization("Basic", "u", "p"), Optional(std::string("Basic dTpw")));
    EXPECT_THAT(authorization("Basic", std::nullopt, "t"),
                Optional(std::string("Basic KG51bGwpOnQ=")));
    EXPECT_THAT(authorization("OAuth2", "u", std::nullopt), Optional(std::string("Bearer (null)")));
}

TEST_F(RKTBitbucketServiceOnline, SendsNoAuthorizationForATokenOrAnUnknownType) {
    for (const char* type : {"Token", "oauth2", ""}) {
        EXPECT_EQ(authorization(type, "u", "t"), std::nullopt) << type;
    }
    const auto untyped = credentials();
    untyped->setCredentialType(std::nullopt);
    validate(*serviceWith(untyped));
    EXPECT_EQ(lastRequest().headers.get("Authorization"), std::nullopt);
}

TEST_F(RKTBitbucketServiceOnline, RefusesATokenSinceItIsNotSent) {
    const auto token = credentials();
    token->setCredentialType(RKTServiceCredentialTypeToken);
    token->setToken("demo-token-octavia");
    EXPECT_EQ(validate(*serviceWith(token))->code(), RKTServiceErrorUnauthorized);
}

TEST_F(RKTBitbucketServiceOnline, ListsTheRepositoriesPageByPage) {
    const auto service = this->service();
    const auto request = sortedBy(RKTServiceSortKeyName, 2);
    request->setCountPerPage(100);
    std::set<std::string> identifiers;
    for (int page = 1; page <= 2; ++page) {
        request->setPage(page);
        const auto result = list(*service, request);
        ASSERT_EQ(result->error(), std::nullopt);
        EXPECT_THAT(result->page(), Optional(RKTNumber(page)));
        EXPECT_THAT(result->totalNumberOfPages(), Optional(RKTNumber(0)));
        EXPECT_EQ(result->linkRelations(), std::nullopt);
        for (const auto& repository : resultsOf(*result)) {
            identifiers.insert(repository->identifier()->description());
        }
    }
    EXPECT_EQ(identifiers.size(),
              origin.server.accounts().withLogin("octavia")->repositories.size());
}

TEST_F(RKTBitbucketServiceOnline, ListsWhatTheVisibilityFilterSays) {
    for (const char* visibility : {"public", "private"}) {
        const auto result = list(*service(), withVisibility(visibility));
        ASSERT_EQ(result->error(), std::nullopt);
        ASSERT_FALSE(result->results()->empty());
        for (const auto& repository : resultsOf(*result)) {
            EXPECT_THAT(repository->visibility(), Optional(std::string(visibility)));
        }
    }
}

TEST_F(RKTBitbucketServiceOnline, FillsARecordFromTheServicesOwnAnswer) {
    const auto properties = propertiesOf(*list(*service())->results()->at(0));
    EXPECT_TRUE(properties.at("identifier").get<std::string>().starts_with("{"));
    EXPECT_TRUE(
        properties.at("HTTPSRepositoryURL").get<std::string>().starts_with("https://octavia@"));
    EXPECT_TRUE(properties.at("SSHRepositoryURL")
                    .get<std::string>()
                    .starts_with("ssh://git@bitbucket.org/"));
    EXPECT_FALSE(properties.contains("webURL"));
}

TEST_F(RKTBitbucketServiceOnline, TakesAnAnswerWithoutBodyForAnEmptyPage) {
    for (const unsigned status : {200U, 204U}) {
        const emulator::Answer empty{.status = status, .headers = {}};
        EXPECT_EQ(validated(empty), std::nullopt);
        const auto result = listed(empty, pageOf(4, std::nullopt));
        EXPECT_EQ(result->error(), std::nullopt);
        EXPECT_THAT(result->results(), Optional(IsEmpty()));
        EXPECT_THAT(result->page(), Optional(RKTNumber(4)));
        EXPECT_THAT(result->totalNumberOfPages(), Optional(RKTNumber(0)));
        EXPECT_THAT(listed(empty)->page(), Optional(RKTNumber(1)));
    }
}

TEST_F(RKTBitbucketServiceOnline, TakesAnEnvelopeWithoutValuesForAnEmptyPage) {
    for (const char* body : {"{}", R"({"values": null})", R"({"values": {"a": {}}})"}) {
        const auto result = listed(emulator::jsonAnswer(200, body));
        EXPECT_EQ(result->error(), std::nullopt) << body;
        EXPECT_THAT(result->results(), Optional(IsEmpty())) << body;
        EXPECT_THAT(result->page(), Optional(RKTNumber(1))) << body;
    }
}

TEST_F(RKTBitbucketServiceOnline, ReadsNothingOfTheEnvelopeButValues) {
    const auto result = listed(emulator::jsonAnswer(
        200,
        R"({"values": [], "page": 5, "pagelen": 10, "size": 99, "next": "https://x/?page=6"})"));
    EXPECT_THAT(result->page(), Optional(RKTNumber(1)));
    EXPECT_THAT(result->totalNumberOfPages(), Optional(RKTNumber(0)));
    EXPECT_EQ(result->linkRelations(), std::nullopt);
}

TEST_F(RKTBitbucketServiceOnline, ReadsTheNumberOfPagesFromALinkHeader) {
    auto answer = emulator::jsonAnswer(200, R"({"values": []})");
    answer.headers.add("Link",
                       R"(<https://api.bitbucket.org/2.0/repositories?page=7>; rel="last")");
    EXPECT_THAT(listed(answer)->totalNumberOfPages(), Optional(RKTNumber(7)));
}

TEST_F(RKTBitbucketServiceOnline, PassesTheMessageOfARefusalOn) {
    const auto error = validated(emulator::jsonAnswer(401, R"({"message": "x"})"));
    EXPECT_EQ(error->code(), RKTServiceErrorUnauthorized);
    EXPECT_THAT(error->localizedRecoverySuggestion(), Optional(std::string("x")));
    EXPECT_EQ(validated(emulator::jsonAnswer(403, "{}"))->code(), 403);
}

TEST_F(RKTBitbucketServiceOnline, LooksForNoMessageBelowTheTopLevel) {
    const auto wrong = credentials();
    wrong->setCredentialType(RKTServiceCredentialTypeOAuth2);
    wrong->setToken("wrong");
    const auto error = validate(*serviceWith(wrong));
    EXPECT_EQ(error->code(), RKTServiceErrorUnauthorized);
    EXPECT_EQ(error->localizedRecoverySuggestion(), std::nullopt);
}

TEST_F(RKTBitbucketServiceOnline, ReportsARefusalInPlainTextAsTheParsersError) {
    const auto wrong = credentials();
    wrong->setToken("wrong");
    EXPECT_EQ(validate(*serviceWith(wrong))->domain(), RKTError::NSCocoaErrorDomain);
    EXPECT_EQ(list(*serviceOf("limited"))->error()->domain(), RKTError::NSCocoaErrorDomain);
}

TEST_F(RKTBitbucketServiceOnline, ReportsAMissingPageInHTMLAsTheParsersError) {
    const auto error = validated(emulator::textAnswer(404, "<html>Not found</html>"));
    EXPECT_EQ(error->domain(), RKTError::NSCocoaErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSPropertyListReadCorruptError);
}

class RKTBitbucketServiceWithoutListsAcrossWorkspaces : public RKTBitbucketServiceOnline {
protected:
    RKTBitbucketServiceWithoutListsAcrossWorkspaces() : RKTBitbucketServiceOnline(options()) {}
    static emulator::ServerOptions options() {
        emulator::ServerOptions options;
        options.listsAcrossWorkspaces = false;
        return options;
    }
};

TEST_F(RKTBitbucketServiceWithoutListsAcrossWorkspaces, ReportsThatTheListIsGone) {
    EXPECT_EQ(validate(*service()), std::nullopt);
    const auto error = list(*service())->error();
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), RKTKorvoGitServiceErrorDomain);
    EXPECT_EQ(error->code(), 410);
    EXPECT_EQ(error->localizedDescription(), "Gone");
}

TEST_F(RKTBitbucketServiceOnline, MapsARepository) {
    EXPECT_EQ(repository(R"({
        "uuid": "{7dd600e6}", "name": "Example", "full_name": "octavia/example",
        "description": "About", "is_private": true, "slug": "example", "scm": "git",
        "owner": {"account_id": "557058:1", "display_name": "Octavia", "uuid": "{1}"},
        "links": {"clone": [{"name": "https", "href": "https://o@bitbucket.org/octavia/example.git"},
                            {"name": "ssh", "href": "git@bitbucket.org:octavia/example.git"}],
                  "html": {"href": "https://bitbucket.org/octavia/example"},
                  "avatar": {"href": "https://bytebucket.org/a"}},
        "mainbranch": {"name": "main", "type": "branch"}, "parent": {"name": "x"},
        "created_on": "2020-11-03T12:09:39.418592+00:00"})"),
              R"({
        "identifier": "{7dd600e6}", "name": "Example", "fullName": "octavia/example",
        "descriptiveText": "About", "ownerIdentifier": "557058:1", "ownerName": "Octavia",
        "visibility": "private",
        "HTTPSRepositoryURL": "https://o@bitbucket.org/octavia/example.git",
        "SSHRepositoryURL": "ssh://git@bitbucket.org/octavia/example.git",
        "defaultBranchName": "main"})"_json);
}

TEST_F(RKTBitbucketServiceOnline, RecordsARepositoryOfUnknownVisibilityAsPublic) {
    EXPECT_EQ(repository("{}"), R"({"visibility": "public"})"_json);
    EXPECT_EQ(repository(R"({"is_private": false})"), R"({"visibility": "public"})"_json);
    EXPECT_EQ(repository(R"({"is_private": "true"})"), R"({"visibility": "public"})"_json);
}

TEST_F(RKTBitbucketServiceOnline, ReadsTheWebAddressAsATextAndNotOfADictionary) {
    EXPECT_EQ(repository(R"({"links": {"html": "https://bitbucket.org/o/e"}})").at("webURL"),
              "https://bitbucket.org/o/e");
    const auto asSent = repository(R"({"links": {"html": {"href": "https://bitbucket.org/o/e"}}})");
    EXPECT_FALSE(asSent.contains("webURL"));
    EXPECT_EQ(repository(R"({"links": {"html": "octavia/page"}})").at("webURL"), "octavia/page");
}

TEST_F(RKTBitbucketServiceOnline, KeepsTheLaterOfTwoCloneAddresses) {
    EXPECT_EQ(cloneAddresses(R"([{"name": "https", "href": "https://a/1.git"},
                                 {"name": "https", "href": "https://a/2.git"}])"),
              R"({"HTTPSRepositoryURL": "https://a/2.git"})"_json);
    EXPECT_EQ(cloneAddresses(R"([{"name": "https", "href": "https://a/1.git"},
                                 {"name": "https", "href": "no address"}])"),
              json::object());
}

TEST_F(RKTBitbucketServiceOnline, PassesOverCloneEntriesThatItDoesNotKnow) {
    EXPECT_EQ(cloneAddresses(R"([{"name": "ssh", "href": "git@a:1.git"},
                                 {"name": "http", "href": "http://a/1.git"},
                                 {"name": "HTTPS", "href": "https://a/2.git"},
                                 {"name": "ssh", "href": ""}, {"name": "", "href": "https://a/3"},
                                 {"name": "ssh"}, {"href": "https://a/4.git"},
                                 {"name": "ssh", "href": 5}, {"name": 6, "href": "git@a:7.git"},
                                 "ssh", null, ["ssh", "git@a:8.git"]])"),
              R"({"SSHRepositoryURL": "ssh://git@a/1.git"})"_json);
}

}  // namespace
