#include "KorvoGitService/RKTGitHubService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "tests/helpers/Services.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;

using Query = std::map<std::string, std::string>;

const RKTServiceClass& adapterClass() {
    return *RKTGitHubService::serviceClass();
}

std::optional<std::string> text(const std::optional<RKTURL>& url) {
    return url ? std::optional(url->absoluteString()) : std::nullopt;
}

std::shared_ptr<RKTRepositoriesRequest> request(std::uint64_t sortKey = 0,
                                                std::uint64_t sortDirection = 0) {
    auto made = std::make_shared<RKTRepositoriesRequest>();
    made->setSortKey(static_cast<RKTServiceSortKey>(sortKey));
    made->setSortDirection(static_cast<RKTServiceSortDirection>(sortDirection));
    return made;
}

/// What a listing would send.
Query queryOf(const std::shared_ptr<const RKTRepositoriesRequest>& request) {
    const auto service = serviceWith(credentialsFor("GitHub"));
    const auto url = RKTURL::URLWithString(listingURL(*service, request).value());
    Query query;
    const auto components = RKTURLComponents::componentsWithURL(url.value());
    const auto items = components->queryItems().value_or(std::vector<RKTURLQueryItem>());
    for (const auto& item : items) query.emplace(item.name, item.value.value_or("(none)"));
    EXPECT_EQ(query.size(), items.size()) << "a name came twice";
    return query;
}

std::optional<std::string> enterpriseValidationURL(const std::optional<std::string>& url) {
    return validationURL(*serviceWith(credentialsFor("GitHubEnterprise", url)));
}

TEST(RKTGitHubServiceClass, ServesBothTypes) {
    EXPECT_EQ(RKTService::classForServiceType("GitHub"), &adapterClass());
    EXPECT_EQ(RKTService::classForServiceType("GitHubEnterprise"), &adapterClass());
    for (const char* serviceType : {"GitHub", "GitHubEnterprise"}) {
        const auto service = serviceWith(credentialsFor(serviceType));
        EXPECT_NE(std::dynamic_pointer_cast<RKTGitHubService>(service), nullptr);
    }
}

TEST(RKTGitHubServiceClass, NamesItsTypesForPeople) {
    EXPECT_THAT(adapterClass().localizedNameForServiceType("GitHub"),
                Optional(std::string("GitHub")));
    EXPECT_THAT(adapterClass().localizedNameForServiceType("GitHubEnterprise"),
                Optional(std::string("GitHub Enterprise")));
    EXPECT_EQ(adapterClass().localizedNameForServiceType("GitLab"), std::nullopt);
    EXPECT_EQ(adapterClass().localizedNameForServiceType(""), std::nullopt);
}

TEST(RKTGitHubServiceClass, HasADefaultAddressForThePublicServiceOnly) {
    EXPECT_EQ(text(adapterClass().defaultURLForServiceType("GitHub")), "https://github.com");
    EXPECT_EQ(adapterClass().defaultURLForServiceType("GitHubEnterprise"), std::nullopt);
    EXPECT_EQ(adapterClass().defaultURLForServiceType("github"), std::nullopt);
}

TEST(RKTGitHubServiceClass, NeedsAnAddressForEnterpriseOnly) {
    EXPECT_FALSE(adapterClass().requiresCustomURLForServiceType("GitHub"));
    EXPECT_TRUE(adapterClass().requiresCustomURLForServiceType("GitHubEnterprise"));
    EXPECT_FALSE(adapterClass().requiresCustomURLForServiceType("GitLab"));
}

TEST(RKTGitHubServiceClass, OffersOAuth2ForThePublicServiceOnly) {
    EXPECT_THAT(adapterClass().supportedCredentialTypesForServiceType("GitHub"),
                ElementsAre("OAuth2", "Token"));
    EXPECT_THAT(adapterClass().supportedCredentialTypesForServiceType("GitHubEnterprise"),
                ElementsAre("Token"));
    EXPECT_THAT(adapterClass().supportedCredentialTypesForServiceType("other"),
                ElementsAre("Token"));
}

TEST(RKTGitHubServiceClass, HelpsWithTokensOfAllTypes) {
    for (const char* serviceType : {"GitHub", "GitHubEnterprise", "other"}) {
        EXPECT_EQ(text(adapterClass().personalAccessTokenHelpURLForServiceType(serviceType)),
                  "https://docs.github.com/en/authentication/keeping-your-account-and-data-secure"
                  "/managing-your-personal-access-tokens");
    }
}

TEST(RKTGitHubServiceClass, SignsInAtThePublicServiceWhateverTheAddress) {
    RKTServiceCredentials credentials("GitHubEnterprise", "OAuth2");
    credentials.setURL(RKTURL::URLWithString("https://ghe.example.com"));
    EXPECT_EQ(adapterClass().OAuth2AuthorizeEndpointForCredentials(credentials).absoluteString(),
              "https://github.com/login/oauth/authorize");
    EXPECT_EQ(adapterClass().OAuth2AccessTokenEndpointForCredentials(credentials).absoluteString(),
              "https://github.com/login/oauth/access_token");
}

TEST(RKTGitHubServiceClass, SuggestsTheAccountToSignInWith) {
    RKTServiceCredentials credentials("GitHub", "OAuth2");
    EXPECT_THAT(adapterClass().OAuth2AuthorizeAdditionalParamtersForCredentials(credentials),
                Optional(IsEmpty()));
    credentials.setUser("octocat");
    EXPECT_THAT(adapterClass().OAuth2AuthorizeAdditionalParamtersForCredentials(credentials),
                Optional(ElementsAre(RKTURLQueryItem{"login", "octocat"})));
}

TEST(RKTGitHubService, IgnoresTheAddressOfPublicAccounts) {
    EXPECT_EQ(validationURL(*serviceWith(credentialsFor("GitHub", "https://example.com:8080/x"))),
              "https://api.github.com/user");
    EXPECT_EQ(listingURL(*serviceWith(credentialsFor("GitHub"))),
              "https://api.github.com/user/repos");
}

TEST(RKTGitHubService, IgnoresTheAddressOfAnAccountOfAnotherType) {
    const auto service = endedWithItsLastUse(
        RKTService::make<RKTGitHubService>(credentialsFor("Other", "https://example.com:8080/x")));
    EXPECT_EQ(validationURL(*service), "https://api.github.com/user");
    EXPECT_EQ(listingURL(*service), "https://api.github.com/user/repos");
}

TEST(RKTGitHubService, GoesToTheEnterpriseServer) {
    EXPECT_EQ(enterpriseValidationURL("https://ghe.example.com"),
              "https://ghe.example.com/api/v3/user");
    EXPECT_EQ(enterpriseValidationURL("http://ghe.example.com:8080"),
              "http://ghe.example.com:8080/api/v3/user");
    EXPECT_EQ(
        listingURL(*serviceWith(credentialsFor("GitHubEnterprise", "https://ghe.example.com"))),
        "https://ghe.example.com/api/v3/user/repos");
}

TEST(RKTGitHubService, ReplacesAPathOfTheEnterpriseAddress) {
    EXPECT_EQ(enterpriseValidationURL("https://ghe.example.com:8443/sub/path/"),
              "https://ghe.example.com:8443/api/v3/user");
}

TEST(RKTGitHubService, KeepsAQueryOfTheEnterpriseAddressUntilItHasItsOwn) {
    const auto credentials = credentialsFor("GitHubEnterprise", "https://ghe.example.com/?a=b");
    EXPECT_EQ(validationURL(*serviceWith(credentials)), "https://ghe.example.com/api/v3/user?a=b");
    EXPECT_EQ(listingURL(*serviceWith(credentials)),
              "https://ghe.example.com/api/v3/user/repos?a=b");
    EXPECT_EQ(listingURL(*serviceWith(credentials), request(2)),
              "https://ghe.example.com/api/v3/user/repos?sort=full_name");
}

TEST(RKTGitHubService, GoesToThePublicHostWithoutAnEnterpriseAddress) {
    EXPECT_EQ(enterpriseValidationURL(std::nullopt), "https://api.github.com/user");
}

TEST(RKTGitHubService, KeepsTheEnterprisePathForAnAddressThatCannotBeTakenApart) {
    EXPECT_EQ(enterpriseValidationURL("https://host:80a"), "https://api.github.com/api/v3/user");
}

TEST(RKTGitHubService, SortsByWhatTheServiceKnows) {
    EXPECT_THAT(queryOf(request(0)), IsEmpty());
    EXPECT_THAT(queryOf(request(1)), IsEmpty());
    EXPECT_THAT(queryOf(request(2)), ElementsAre(Pair("sort", "full_name")));
    EXPECT_THAT(queryOf(request(3)), ElementsAre(Pair("sort", "created")));
    EXPECT_THAT(queryOf(request(4)), ElementsAre(Pair("sort", "updated")));
    EXPECT_THAT(queryOf(request(5)), ElementsAre(Pair("sort", "pushed")));
    EXPECT_THAT(queryOf(request(6)), IsEmpty());
    EXPECT_THAT(queryOf(request(UINT64_MAX)), IsEmpty());
}

TEST(RKTGitHubService, SendsADirectionWithOrWithoutASortKey) {
    EXPECT_THAT(queryOf(request(1, 2)), ElementsAre(Pair("direction", "desc")));
    EXPECT_THAT(queryOf(request(2, 1)),
                ElementsAre(Pair("direction", "asc"), Pair("sort", "full_name")));
    EXPECT_THAT(queryOf(request(0, 3)), IsEmpty());
}

TEST(RKTGitHubService, FiltersByKnownVisibilities) {
    const auto filtered = [](const char* visibility) {
        const auto asked = request();
        asked->setVisibility(visibility);
        return queryOf(asked);
    };
    EXPECT_THAT(filtered("public"), ElementsAre(Pair("visibility", "public")));
    EXPECT_THAT(filtered("private"), ElementsAre(Pair("visibility", "private")));
    EXPECT_THAT(filtered("internal"), ElementsAre(Pair("visibility", "internal")));
    EXPECT_THAT(filtered("Public"), IsEmpty());
    EXPECT_THAT(filtered(""), IsEmpty());
}

TEST(RKTGitHubService, HasNoFilterForStates) {
    const auto asked = request();
    asked->setState("closed");
    EXPECT_THAT(queryOf(asked), IsEmpty());
}

TEST(RKTGitHubService, SendsPageAndCountAsTheyAre) {
    const auto asked = request();
    asked->setPage(3);
    EXPECT_THAT(queryOf(asked), ElementsAre(Pair("page", "3")));
    asked->setPage(std::nullopt);
    asked->setCountPerPage(0);
    EXPECT_THAT(queryOf(asked), ElementsAre(Pair("per_page", "0")));
    asked->setPage(-1);
    asked->setCountPerPage(UINT64_MAX);
    EXPECT_THAT(queryOf(asked),
                ElementsAre(Pair("page", "-1"), Pair("per_page", "18446744073709551615")));
}

class RKTGitHubServiceOnline : public testing::Test {
protected:
    std::shared_ptr<RKTService> service(const std::string& user, const std::string& token) const {
        return serviceWith(credentialsFor("GitHub", std::nullopt, user, token));
    }
    std::shared_ptr<RKTService> octavia() const { return service("octavia", "demo-token-octavia"); }

    std::shared_ptr<RKTServiceArrayResult> listed(const std::string& body,
                                                  emulator::Headers headers = {}) {
        emulator::Answer answer = emulator::jsonAnswer(200, body);
        for (const auto& [name, value] : headers) answer.headers.add(name, value);
        origin.server.script({}, answer, 1);
        return list(*octavia());
    }
    std::shared_ptr<RKTServiceRepository> repository(const std::string& body) {
        return listed("[" + body + "]")->results().value().at(0);
    }

    SharedOrigin origin;
};

TEST_F(RKTGitHubServiceOnline, AcceptsGoodCredentials) {
    EXPECT_EQ(validate(*octavia()), std::nullopt);
    const auto sent = origin.server.requests().at(0);
    EXPECT_TRUE(sent.tls);
    EXPECT_EQ(sent.method, "GET");
    EXPECT_EQ(sent.authority, "api.github.com");
    EXPECT_EQ(sent.target, "/user");
    EXPECT_THAT(sent.headers.get("Accept"),
                Optional(std::string("application/vnd.github.v3+json")));
}

TEST_F(RKTGitHubServiceOnline, SignsAllCredentialTypesAlike) {
    for (const char* type : {"Token", "OAuth2", "Basic", "other"}) {
        const auto credentials = credentialsFor("GitHub", std::nullopt, "u", "p");
        credentials->setCredentialType(type);
        validate(*serviceWith(credentials));
        EXPECT_THAT(origin.server.requests().back().headers.get("Authorization"),
                    Optional(std::string("Basic dTpw")));
    }
}

TEST_F(RKTGitHubServiceOnline, SignsWithoutAUserToo) {
    validate(*serviceWith(credentialsFor("GitHub", std::nullopt, std::nullopt, "t")));
    EXPECT_THAT(origin.server.requests().back().headers.get("Authorization"),
                Optional(std::string("Basic KG51bGwpOnQ=")));
}

TEST_F(RKTGitHubServiceOnline, RefusesAWrongToken) {
    const auto error = validate(*service("octavia", "wrong"));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), RKTKorvoGitServiceErrorDomain);
    EXPECT_EQ(error->code(), RKTServiceErrorUnauthorized);
    EXPECT_EQ(error->localizedDescription(), "Unauthorized");
    EXPECT_THAT(error->localizedRecoverySuggestion(), Optional(std::string("Bad credentials")));
}

TEST_F(RKTGitHubServiceOnline, ReachesAnEnterpriseServer) {
    const auto enterprise = serviceWith(
        credentialsFor("GitHubEnterprise", origin.url("/x"), "octavia", "demo-token-octavia"));
    EXPECT_EQ(validate(*enterprise), std::nullopt);
    EXPECT_EQ(origin.server.requests().back().target, "/api/v3/user");
    EXPECT_EQ(list(*enterprise)->error(), std::nullopt);
    EXPECT_EQ(origin.server.requests().back().target, "/api/v3/user/repos");
}

TEST_F(RKTGitHubServiceOnline, ReportsARefusalAsItsStatus) {
    using emulator::Restriction;
    const std::map<Restriction, std::int64_t> refusals = {
        {Restriction::RateLimited, 403},
        {Restriction::RateLimitedAs429, 429},
        {Restriction::SecondaryLimited, 403},
        {Restriction::SingleSignOn, 403},
    };
    std::size_t refused = 0;
    for (const auto& account : origin.server.accounts().all()) {
        const auto refusal = refusals.find(account.restriction);
        if (refusal == refusals.end()) continue;
        const auto error = list(*service(account.login, account.tokens.at(0).value))->error();
        ASSERT_TRUE(error.has_value()) << account.login;
        EXPECT_EQ(error->domain(), RKTKorvoGitServiceErrorDomain) << account.login;
        EXPECT_EQ(error->code(), refusal->second) << account.login;
        EXPECT_TRUE(error->localizedRecoverySuggestion().has_value()) << account.login;
        ++refused;
    }
    EXPECT_EQ(refused, refusals.size());
}

TEST_F(RKTGitHubServiceOnline, CountsNoPagesWhenTheServiceDoesNot) {
    for (const auto& account : origin.server.accounts().all()) {
        if (account.restriction != emulator::Restriction::OmitsLastLink) continue;
        const auto asked = request();
        asked->setCountPerPage(5);
        const auto result = list(*service(account.login, account.tokens.at(0).value), asked);
        ASSERT_TRUE(result->linkRelations().has_value());
        EXPECT_TRUE(result->linkRelations()->contains(RKTServiceLinkRelationNext));
        EXPECT_THAT(result->totalNumberOfPages(), Optional(RKTNumber(0)));
        return;
    }
    FAIL() << "no account whose lists are not counted";
}

TEST_F(RKTGitHubServiceOnline, ListsAllRepositoriesPageByPage) {
    const auto octavia = this->octavia();
    const auto asked = request(2, 1);
    asked->setCountPerPage(50);
    std::set<std::string> identifiers;
    std::int64_t page = 1;
    for (bool more = true; more; ++page) {
        asked->setPage(page);
        const auto result = list(*octavia, asked);
        ASSERT_EQ(result->error(), std::nullopt);
        EXPECT_THAT(result->page(), Optional(RKTNumber(page)));
        const auto repositories = result->results().value();
        for (const auto& repository : repositories) {
            identifiers.insert(repository->identifier()->description());
        }
        more = result->linkRelations() && result->linkRelations()->contains("next");
        EXPECT_THAT(result->totalNumberOfPages(), Optional(RKTNumber(more ? 3 : 0)));
    }
    EXPECT_EQ(page - 1, 3);
    EXPECT_EQ(identifiers.size(),
              origin.server.accounts().withLogin("octavia")->repositories.size());
}

TEST_F(RKTGitHubServiceOnline, MapsARepository) {
    const auto found = repository(
        R"({"id": 1296269, "name": "Hello-World", "full_name": "octocat/Hello-World",
            "owner": {"login": "octocat", "id": 583231}, "description": "First", "archived": true,
            "visibility": "internal", "fork": false, "forks_count": 9, "stargazers_count": 80,
            "html_url": "https://github.com/octocat/Hello-World", "private": true,
            "ssh_url": "git@github.com:octocat/Hello-World.git", "path": "x", "avatar_url": "x",
            "clone_url": "https://github.com/octocat/Hello-World.git", "default_branch": "main"})");
    EXPECT_THAT(found->identifier(), Optional(RKTServiceIdentifier(1296269)));
    EXPECT_THAT(found->name(), Optional(std::string("Hello-World")));
    EXPECT_THAT(found->fullName(), Optional(std::string("octocat/Hello-World")));
    EXPECT_THAT(found->descriptiveText(), Optional(std::string("First")));
    EXPECT_EQ(found->path(), std::nullopt);
    EXPECT_EQ(found->fullPath(), std::nullopt);
    EXPECT_THAT(found->ownerIdentifier(), Optional(RKTServiceIdentifier(583231)));
    EXPECT_THAT(found->ownerName(), Optional(std::string("octocat")));
    EXPECT_THAT(found->state(), Optional(std::string("closed")));
    EXPECT_THAT(found->visibility(), Optional(std::string("internal")));
    EXPECT_THAT(found->isFork(), Optional(RKTNumber(false)));
    EXPECT_THAT(found->numberOfForks(), Optional(RKTNumber(9)));
    EXPECT_THAT(found->numberOfStars(), Optional(RKTNumber(80)));
    EXPECT_EQ(found->avatarURL(), std::nullopt);
    EXPECT_EQ(text(found->webURL()), "https://github.com/octocat/Hello-World");
    EXPECT_EQ(text(found->SSHRepositoryURL()), "ssh://git@github.com/octocat/Hello-World.git");
    EXPECT_EQ(text(found->HTTPSRepositoryURL()), "https://github.com/octocat/Hello-World.git");
    EXPECT_THAT(found->defaultBranchName(), Optional(std::string("main")));
}

TEST_F(RKTGitHubServiceOnline, TakesAddressesOfPageAndDownloadAsTheyStand) {
    const auto found =
        repository(R"({"id": 1, "html_url": "octocat/page", "clone_url": "git@host:o/r.git"})");
    EXPECT_EQ(text(found->webURL()), "octocat/page");
    EXPECT_EQ(text(found->HTTPSRepositoryURL()), "git@host:o/r.git");
}

TEST_F(RKTGitHubServiceOnline, RecordsARepositoryOfUnknownVisibilityAsPrivate) {
    const auto found = repository(R"({"id": 1, "private": false})");
    EXPECT_THAT(found->visibility(), Optional(std::string("private")));
    EXPECT_THAT(found->state(), Optional(std::string("open")));
    EXPECT_EQ(found->isFork(), std::nullopt);
    EXPECT_EQ(found->numberOfStars(), std::nullopt);
    EXPECT_EQ(found->webURL(), std::nullopt);
}

TEST_F(RKTGitHubServiceOnline, LeavesMistypedFieldsUnset) {
    const auto found = repository(
        R"({"id": "1", "owner": {"id": "2", "login": 3}, "fork": "true", "archived": "true",
            "html_url": 4, "ssh_url": "not an address", "visibility": 5})");
    EXPECT_EQ(found->identifier(), std::nullopt);
    EXPECT_EQ(found->ownerIdentifier(), std::nullopt);
    EXPECT_EQ(found->ownerName(), std::nullopt);
    EXPECT_EQ(found->isFork(), std::nullopt);
    EXPECT_THAT(found->state(), Optional(std::string("open")));
    EXPECT_EQ(found->webURL(), std::nullopt);
    EXPECT_EQ(found->SSHRepositoryURL(), std::nullopt);
    EXPECT_THAT(found->visibility(), Optional(std::string("private")));
}

TEST_F(RKTGitHubServiceOnline, ReadsTheNumberOfPagesFromTheLastLink) {
    const auto result =
        listed("[]", {{"Link", "<https://api.github.com/user/repos?page=7>; rel=\"last\""}});
    EXPECT_THAT(result->totalNumberOfPages(), Optional(RKTNumber(7)));
    EXPECT_THAT(result->page(), Optional(RKTNumber(1)));
    EXPECT_THAT(listed("[]")->totalNumberOfPages(), Optional(RKTNumber(0)));
}

TEST_F(RKTGitHubServiceOnline, AcceptsAnEmptyAnswer) {
    origin.server.script({}, emulator::Answer{}, 2);
    EXPECT_EQ(validate(*octavia()), std::nullopt);
    const auto result = list(*octavia());
    EXPECT_EQ(result->error(), std::nullopt);
    EXPECT_EQ(result->results(), std::nullopt);
}

TEST_F(RKTGitHubServiceOnline, ReportsAnErrorPageAsTheParsersError) {
    origin.server.script({}, emulator::textAnswer(502, "<html>Bad Gateway</html>"), 2);
    EXPECT_EQ(validate(*octavia())->code(), RKTError::NSPropertyListReadCorruptError);
    EXPECT_EQ(list(*octavia())->error()->domain(), RKTError::NSCocoaErrorDomain);
}

}  // namespace
