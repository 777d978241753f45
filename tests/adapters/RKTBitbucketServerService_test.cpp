#include "KorvoGitService/RKTBitbucketServerService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTException.h"
#include "tests/helpers/Adapters.h"
#include "tests/helpers/Corpus.h"

namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Optional;
using testing::Pair;
using testing::ThrowsMessage;

const RKTServiceClass& adapterClass() {
    return *RKTBitbucketServerService::serviceClass();
}

std::shared_ptr<RKTService> serviceAt(const std::optional<std::string>& url,
                                      const std::optional<std::string>& user = "jdoe") {
    return serviceWith(credentialsFor("BitbucketServer", url, user, "t"));
}

std::map<std::string, std::string> queryOf(
    const std::shared_ptr<const RKTRepositoriesRequest>& request) {
    return listingQuery(serviceAt("https://git.example.com"), request);
}

TEST(RKTBitbucketServerServiceClass, ServesItsType) {
    EXPECT_EQ(RKTService::classForServiceType("BitbucketServer"), &adapterClass());
    EXPECT_TRUE(isOfClass<RKTBitbucketServerService>(*serviceAt(std::nullopt)));
}

TEST(RKTBitbucketServerServiceClass, NamesItsTypeForPeople) {
    EXPECT_THAT(adapterClass().localizedNameForServiceType("BitbucketServer"),
                Optional(std::string("Bitbucket Server")));
    EXPECT_EQ(adapterClass().localizedNameForServiceType("Bitbucket"), std::nullopt);
}

TEST(RKTBitbucketServerServiceClass, NeedsAnAddressForEveryType) {
    for (const char* serviceType : {"BitbucketServer", "other", ""}) {
        EXPECT_TRUE(adapterClass().requiresCustomURLForServiceType(serviceType));
        EXPECT_EQ(adapterClass().defaultURLForServiceType(serviceType), std::nullopt);
    }
}

TEST(RKTBitbucketServerServiceClass, TakesPasswordsAndTokens) {
    for (const char* serviceType : {"BitbucketServer", "other"}) {
        EXPECT_THAT(adapterClass().supportedCredentialTypesForServiceType(serviceType),
                    ElementsAre("Basic", "Token"));
        EXPECT_EQ(adapterClass().personalAccessTokenHelpURLForServiceType(serviceType),
                  std::nullopt);
    }
}

TEST(RKTBitbucketServerServiceClass, HasNoEndpointsForSigningIn) {
    const RKTServiceCredentials credentials("BitbucketServer", "OAuth2");
    EXPECT_THAT([&] { adapterClass().OAuth2AuthorizeURLForCredentials(credentials); },
                ThrowsMessage<RKTInvalidArgumentException>(
                    "OAuth2AuthorizeEndpointForCredentials: must be overridden by subclasses."));
    EXPECT_EQ(adapterClass().OAuth2AuthorizeAdditionalParamtersForCredentials(credentials),
              std::nullopt);
}

TEST(RKTBitbucketServerService, GoesToTheAccountsAddress) {
    EXPECT_EQ(validationURL(*serviceAt("http://git.example.com:7990")),
              "http://git.example.com:7990/rest/api/1.0/users/jdoe");
    EXPECT_EQ(listingURL(*serviceAt("https://git.example.com")),
              "https://git.example.com/rest/api/1.0/repos?permission=REPO_READ");
}

TEST(RKTBitbucketServerService, ReplacesAPathOfTheAddress) {
    EXPECT_EQ(validationURL(*serviceAt("https://git.example.com/bitbucket/")),
              "https://git.example.com/rest/api/1.0/users/jdoe");
}

TEST(RKTBitbucketServerService, KeepsTheUserOfTheAddress) {
    EXPECT_EQ(validationURL(*serviceAt("https://u:p@git.example.com")),
              "https://u:p@git.example.com/rest/api/1.0/users/jdoe");
}

TEST(RKTBitbucketServerService, KeepsAQueryOfTheAddressUntilItHasItsOwn) {
    EXPECT_EQ(validationURL(*serviceAt("https://git.example.com?a=b")),
              "https://git.example.com/rest/api/1.0/users/jdoe?a=b");
    EXPECT_EQ(listingURL(*serviceAt("https://git.example.com?a=b")),
              "https://git.example.com/rest/api/1.0/repos?permission=REPO_READ");
}

TEST(RKTBitbucketServerService, HasNoURLWithoutAnAddress) {
    EXPECT_EQ(validationURL(*serviceAt(std::nullopt)), std::nullopt);
    EXPECT_EQ(listingURL(*serviceAt(std::nullopt)), std::nullopt);
    EXPECT_EQ(validationURL(*serviceAt("https://host:80a")), std::nullopt);
}

TEST(RKTBitbucketServerService, AsksForTheUsersOwnRecord) {
    for (const auto& example : rkt::tests::corpus("user_paths")) {
        SCOPED_TRACE(example.dump());
        EXPECT_EQ(validationURL(*serviceAt("https://h.example", example.at("user"))),
                  example.at("url").get<std::string>());
    }
}

TEST(RKTBitbucketServerService, AddsPathSegmentsForSlashesInTheUsersName) {
    EXPECT_EQ(validationURL(*serviceAt("https://h.example", "a/b")),
              "https://h.example/rest/api/1.0/users/a/b");
}

TEST(RKTBitbucketServerService, AsksForThePlaceholderWithoutAUser) {
    EXPECT_EQ(validationURL(*serviceAt("https://h.example", std::nullopt)),
              "https://h.example/rest/api/1.0/users/(null)");
}

TEST(RKTBitbucketServerService, AsksForTheSignedInUserOfOtherServiceTypes) {
    RKTService::setClass(&adapterClass(), "LikeBitbucketServer");
    const auto other =
        serviceWith(credentialsFor("LikeBitbucketServer", "https://h.example", "jdoe", "t"));
    RKTService::setClass(nullptr, "LikeBitbucketServer");
    EXPECT_EQ(validationURL(*other), "https://h.example/rest/api/1.0/user");
}

TEST(RKTBitbucketServerService, CannotSortOrFilterByState) {
    const auto request = sortedBy(RKTServiceSortKeyName, 2);
    request->setState("closed");
    EXPECT_THAT(queryOf(request), ElementsAre(Pair("permission", "REPO_READ")));
}

TEST(RKTBitbucketServerService, FiltersByTheVisibilitiesThatItKnows) {
    EXPECT_THAT(queryOf(withVisibility("public")), Contains(Pair("visibility", "public")));
    EXPECT_THAT(queryOf(withVisibility("private")), Contains(Pair("visibility", "private")));
    EXPECT_THAT(queryOf(withVisibility("internal")), Not(Contains(Key("visibility"))));
    EXPECT_THAT(queryOf(withVisibility("other")), Not(Contains(Key("visibility"))));
}

TEST(RKTBitbucketServerService, SendsTheQuotientOfPageAndCountAsStart) {
    const auto startOf = [](RKTNumber page, RKTNumber count) {
        return queryOf(pageOf(page, count)).at("start");
    };
    EXPECT_THAT(
        queryOf(pageOf(3, 10)),
        ElementsAre(Pair("limit", "10"), Pair("permission", "REPO_READ"), Pair("start", "0")));
    EXPECT_EQ(startOf(1, 25), "0");
    EXPECT_EQ(startOf(25, 25), "0");
    EXPECT_EQ(startOf(26, 25), "1");
    EXPECT_EQ(startOf(51, 25), "2");
    EXPECT_EQ(startOf(7, 1), "6");
}

TEST(RKTBitbucketServerService, ReadsPageAndCountAsUnsignedNumbers) {
    const auto negative = queryOf(pageOf(-1, 10));
    EXPECT_EQ(negative.at("start"), "1844674407370955161");
    const auto fraction = queryOf(pageOf(2.9, 1.5));
    EXPECT_EQ(fraction.at("start"), "1");
    EXPECT_EQ(fraction.at("limit"), "1");
    EXPECT_EQ(queryOf(pageOf(1, -1)).at("limit"), "18446744073709551615");
}

TEST(RKTBitbucketServerService, SendsNeitherStartNorLimitUnlessBothAreThere) {
    for (const auto& request :
         {pageOf(0, 10), pageOf(3, 0), pageOf(std::nullopt, 10), pageOf(3, std::nullopt),
          pageOf(0.5, 10), pageOf(std::nullopt, std::nullopt)}) {
        EXPECT_THAT(queryOf(request), ElementsAre(Pair("permission", "REPO_READ")));
    }
}

class RKTBitbucketServerServiceOnline : public AdapterTest {
protected:
    std::shared_ptr<RKTServiceCredentials> credentials() const override {
        return credentialsFor("BitbucketServer", origin.url("/bitbucket"), "octavia",
                              "demo-token-octavia");
    }
    json repository(const std::string& body) {
        const auto answer = emulator::jsonAnswer(200, R"({"values": [)" + body + "]}");
        return propertiesOf(*listed(answer)->results()->at(0));
    }
    std::optional<RKTNumber> pageFrom(
        const std::string& body, const std::shared_ptr<const RKTRepositoriesRequest>& request) {
        return listed(emulator::jsonAnswer(200, body), request)->page();
    }
};

TEST_F(RKTBitbucketServerServiceOnline, AcceptsGoodCredentials) {
    EXPECT_EQ(validate(*service()), std::nullopt);
    EXPECT_EQ(lastRequest().authority, origin.authority());
    EXPECT_EQ(lastRequest().target, "/rest/api/1.0/users/octavia");
    EXPECT_THAT(lastRequest().headers.get("Accept"), Optional(std::string("application/json")));
}

TEST_F(RKTBitbucketServerServiceOnline, SignsByTheCredentialType) {
    EXPECT_THAT(authorization("OAuth2", "u", "p"), Optional(std::string("Bearer p")));
    EXPECT_THAT(authorization("Basic", "u", "p"), Optional(std::string("Basic dTpw")));
    EXPECT_EQ(authorization("other", "u", "p"), std::nullopt);
}

TEST_F(RKTBitbucketServerServiceOnline, SendsATokenAsAPasswordAndNeverAsABearerToken) {
    EXPECT_THAT(authorization("Token", "u", "t"), Optional(std::string("Basic dTp0")));
}

TEST_F(RKTBitbucketServerServiceOnline, RefusesAWrongToken) {
    const auto wrong = credentials();
    wrong->setToken("wrong");
    const auto error = validate(*serviceWith(wrong));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RKTServiceErrorUnauthorized);
    // The service writes its messages into a list, where the adapter does not look for one.
    EXPECT_EQ(error->localizedRecoverySuggestion(), std::nullopt);
}

TEST_F(RKTBitbucketServerServiceOnline, ReportsAMissingUser) {
    const auto misspelled = credentials();
    misspelled->setUser(std::nullopt);
    misspelled->setCredentialType(RKTServiceCredentialTypeOAuth2);
    EXPECT_EQ(validate(*serviceWith(misspelled))->code(), 404);
}

TEST_F(RKTBitbucketServerServiceOnline, FailsWithoutAnAddressAsARequestWithoutURL) {
    const auto error = validate(*serviceAt(std::nullopt));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), RKTError::NSURLErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSURLErrorUnsupportedURL);
    const auto result = list(*serviceAt(std::nullopt));
    EXPECT_EQ(result->error()->code(), RKTError::NSURLErrorUnsupportedURL);
    EXPECT_EQ(result->results(), std::nullopt);
}

TEST_F(RKTBitbucketServerServiceOnline, ListsWithoutTotalOrSortingOrLinks) {
    const auto result = list(*service(), pageOf(1, 1000));
    ASSERT_EQ(result->error(), std::nullopt);
    EXPECT_EQ(result->results()->size(),
              origin.server.accounts().withLogin("octavia")->repositories.size());
    EXPECT_THAT(result->page(), Optional(RKTNumber(1)));
    EXPECT_EQ(result->totalNumberOfPages(), std::nullopt);
    EXPECT_EQ(result->linkRelations(), std::nullopt);
}

TEST_F(RKTBitbucketServerServiceOnline, ShowsTheFirstRepositoriesAgainOnTheFirstPages) {
    const auto service = this->service();
    const auto namesOn = [&](int page) {
        std::vector<std::string> names;
        for (const auto& repository : resultsOf(*list(*service, pageOf(page, 25)))) {
            names.push_back(repository->name().value());
        }
        return names;
    };
    const auto first = namesOn(1);
    EXPECT_EQ(first.size(), 25U);
    EXPECT_EQ(namesOn(25), first);
    const auto shifted = namesOn(26);
    EXPECT_EQ(shifted.front(), first.at(1));
    EXPECT_EQ(shifted.size(), 25U);
}

TEST_F(RKTBitbucketServerServiceOnline, ReckonsThePageFromTheAnswersStart) {
    EXPECT_THAT(pageFrom(R"({"start": 30, "values": []})", pageOf(1, 10)), Optional(RKTNumber(4)));
    EXPECT_THAT(pageFrom(R"({"start": 39, "values": []})", pageOf(1, 10)), Optional(RKTNumber(4)));
    EXPECT_THAT(pageFrom(R"({"start": 30})", pageOf(std::nullopt, 10)), Optional(RKTNumber(4)));
}

TEST_F(RKTBitbucketServerServiceOnline, TakesAnAnswerWithoutStartForTheFirstPage) {
    for (const char* body : {"{}", R"({"start": "30"})", R"({"start": null})", ""}) {
        EXPECT_THAT(pageFrom(body, pageOf(5, 10)), Optional(RKTNumber(1))) << body;
    }
}

TEST_F(RKTBitbucketServerServiceOnline, HasNoPageWithoutACount) {
    EXPECT_EQ(pageFrom(R"({"start": 30})", nullptr), std::nullopt);
    EXPECT_EQ(pageFrom(R"({"start": 30})", pageOf(4, 0)), std::nullopt);
}

TEST_F(RKTBitbucketServerServiceOnline, ReadsNothingElseOfTheEnvelope) {
    const auto result = listed(emulator::jsonAnswer(
        200,
        R"({"size": 1, "limit": 25, "isLastPage": false, "nextPageStart": 25, "values": []})"));
    EXPECT_EQ(result->page(), std::nullopt);
    EXPECT_EQ(result->totalNumberOfPages(), std::nullopt);
}

TEST_F(RKTBitbucketServerServiceOnline, TakesAnAnswerWithoutBodyForAnEmptyPage) {
    const emulator::Answer empty{.status = 204, .headers = {}};
    EXPECT_EQ(validated(empty), std::nullopt);
    const auto result = listed(empty);
    EXPECT_EQ(result->error(), std::nullopt);
    EXPECT_THAT(result->results(), Optional(IsEmpty()));
}

TEST_F(RKTBitbucketServerServiceOnline, MapsARepository) {
    EXPECT_EQ(repository(R"({
        "id": 1, "slug": "rep_1", "name": "rep 1", "full_name": "PRJ/rep_1", "description": "About",
        "scmId": "git", "state": "AVAILABLE", "public": true, "archived": true, "forkable": true,
        "project": {"key": "PRJ", "id": 7, "name": "Project", "owner": {"id": 3}},
        "links": {"clone": [{"href": "ssh://git@h:7999/prj/rep_1.git", "name": "ssh"},
                            {"href": "https://h/scm/prj/rep_1.git", "name": "http"}],
                  "self": [{"href": "https://h/projects/PRJ/repos/rep_1/browse"}]}})"),
              R"({
        "identifier": 1, "name": "rep 1", "fullName": "PRJ/rep_1", "descriptiveText": "About",
        "visibility": "public", "SSHRepositoryURL": "ssh://git@h:7999/prj/rep_1.git",
        "HTTPSRepositoryURL": "https://h/scm/prj/rep_1.git"})"_json);
}

TEST_F(RKTBitbucketServerServiceOnline, RecordsARepositoryOfUnknownVisibilityAsPrivate) {
    EXPECT_EQ(repository("{}"), R"({"visibility": "private"})"_json);
    EXPECT_EQ(repository(R"({"public": false})"), R"({"visibility": "private"})"_json);
    EXPECT_EQ(repository(R"({"public": "true"})"), R"({"visibility": "private"})"_json);
}

TEST_F(RKTBitbucketServerServiceOnline, HasNoWebAddressWhateverTheSelfLinkIs) {
    for (const char* self :
         {R"([{"name": "x", "href": "https://h/x"}])", R"([{"href": "https://h/x"}])",
          R"({"name": "x", "href": "https://h/x"})", R"({"x": {"name": "n", "href": "https://h"}})",
          R"("https://h/x")", "{}"}) {
        const auto properties = repository(std::string(R"({"links": {"self": )") + self + "}}");
        EXPECT_FALSE(properties.contains("webURL")) << self;
    }
}

TEST_F(RKTBitbucketServerServiceOnline, TakesCloneAddressesUnderBothNamesOfHTTP) {
    for (const char* name : {"http", "https"}) {
        const auto properties =
            repository(R"({"links": {"clone": [{"name": ")" + std::string(name) +
                       R"(", "href": "https://h/scm/p/r.git"}]}})");
        EXPECT_EQ(properties.at("HTTPSRepositoryURL"), "https://h/scm/p/r.git") << name;
    }
}

TEST_F(RKTBitbucketServerServiceOnline, KeepsTheLaterOfTwoCloneAddresses) {
    const auto properties = repository(R"({"links": {"clone": [
        {"name": "https", "href": "https://h/1.git"}, {"name": "ssh", "href": "git@h:1.git"},
        {"name": "http", "href": "https://h/2.git"}, {"name": "ssh", "href": "git@h:2.git"},
        {"name": "git", "href": "git://h/3.git"}]}})");
    EXPECT_EQ(properties.at("HTTPSRepositoryURL"), "https://h/2.git");
    EXPECT_EQ(properties.at("SSHRepositoryURL"), "ssh://git@h/2.git");
}

}  // namespace
