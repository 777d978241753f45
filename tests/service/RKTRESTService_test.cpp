#include "KorvoGitService/RKTRESTService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "tests/helpers/Services.h"

namespace {

using emulator::Answer;
using testing::ElementsAre;
using testing::Key;
using testing::Optional;

/// As little as an adapter has to say.
class OwnRESTService : public RKTRESTService {
public:
    explicit OwnRESTService(Initializer initializer) : RKTRESTService(initializer) {}

protected:
    std::optional<RKTURLComponents> componentsForPath(const RKTServiceCredentials& credentials,
                                                      std::string_view path) const override {
        const auto url = credentials.URL();
        auto components = url ? RKTURLComponents::componentsWithURL(*url) : std::nullopt;
        if (components) components->setPath(path);
        return components;
    }

    std::optional<std::string> authorizationForCredentials(
        const RKTServiceCredentials& credentials) const override {
        const auto type = credentials.credentialType();
        if (type == RKTServiceCredentialTypeOAuth2) return bearerAuthorization(credentials);
        if (type == RKTServiceCredentialTypeToken) return std::nullopt;
        return basicAuthorization(credentials);
    }

    Listing listingForRequest(
        std::shared_ptr<const RKTRepositoriesRequest> request) const override {
        static const RKTRepositoryMapping mapping({
            {"name", RKTRepositoryFields::string<&RKTServiceRepository::setName>},
        });
        Parameters parameters;
        append("visibility", knownVisibility(*request), parameters);
        appendPaging(*request, "count", parameters);
        return {"/list", std::move(parameters),
                readerPagedByLinks(readElements, mapping, std::move(request))};
    }
};

/// The other ways to do it.
class OtherService : public OwnRESTService {
public:
    using OwnRESTService::OwnRESTService;

protected:
    std::string acceptHeader() const override { return "application/own"; }
    ResponseOrder responseOrder() const override { return ResponseOrder::StatusThenParse; }
    std::string validationPathForCredentials(
        const RKTServiceCredentials& credentials) const override {
        return "/users/" + credentials.user().value_or("nobody");
    }
    Listing listingForRequest(
        std::shared_ptr<const RKTRepositoriesRequest> request) const override {
        static const RKTRepositoryMapping mapping({
            {"name", RKTRepositoryFields::string<&RKTServiceRepository::setName>},
        });
        return {"/list", {}, readerPagedByLinks(readValues, mapping, std::move(request))};
    }
};

/// Whose account changes at every step of making a request.
class ServiceOfManyAccounts : public OwnRESTService {
public:
    using OwnRESTService::OwnRESTService;
    std::function<void()> changeAccount = [] {};

protected:
    std::string validationPathForCredentials(
        const RKTServiceCredentials& credentials) const override {
        changeAccount();
        return "/users/" + credentials.user().value_or("nobody");
    }
    std::optional<RKTURLComponents> componentsForPath(const RKTServiceCredentials& credentials,
                                                      std::string_view path) const override {
        changeAccount();
        return OwnRESTService::componentsForPath(credentials, path);
    }
    std::string acceptHeader() const override {
        changeAccount();
        return OwnRESTService::acceptHeader();
    }
};

class RKTRESTServiceTest : public testing::Test {
protected:
    std::shared_ptr<RKTServiceCredentials> credentials() const {
        return credentialsFor("Own", origin.server.httpsURL(), "u", "p");
    }
    std::shared_ptr<RKTService> ownService() const {
        return endedWithItsLastUse(RKTService::make<OwnRESTService>(credentials()));
    }
    std::shared_ptr<RKTService> otherService() const {
        return endedWithItsLastUse(RKTService::make<OtherService>(credentials()));
    }

    void answer(unsigned status, std::string body, emulator::Headers headers = {}) {
        origin.server.clearScripts();
        origin.server.script(
            {},
            Answer{.status = status, .reason = {}, .headers = headers, .body = std::move(body)});
    }

    std::optional<std::string> sentHeader(const char* name) const {
        return origin.server.requests().back().headers.get(name);
    }

    SharedOrigin origin;
};

void expectParserError(const std::optional<RKTError>& error) {
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), RKTError::NSCocoaErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSPropertyListReadCorruptError);
}

void expectHTTPError(const std::optional<RKTError>& error, std::int64_t code,
                     const std::optional<std::string>& suggestion = {}) {
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), RKTKorvoGitServiceErrorDomain);
    EXPECT_EQ(error->code(), code);
    EXPECT_EQ(error->localizedRecoverySuggestion(), suggestion);
}

constexpr const char* errorPage = "<html><body>Bad gateway</body></html>";

TEST_F(RKTRESTServiceTest, SendsOneGETWithItsHeaders) {
    answer(200, "{}");
    EXPECT_EQ(validate(*ownService()), std::nullopt);
    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/user");
    EXPECT_EQ(requests[0].body, "");
    EXPECT_THAT(sentHeader("Accept"), Optional(std::string("application/json")));
    EXPECT_EQ(sentHeader("Authorization"), std::nullopt);
}

TEST_F(RKTRESTServiceTest, SendsWhatAnAdapterSaysOtherwise) {
    answer(200, "{}");
    EXPECT_EQ(validate(*otherService()), std::nullopt);
    EXPECT_EQ(origin.server.requests().back().target, "/users/u");
    EXPECT_THAT(sentHeader("Accept"), Optional(std::string("application/own")));
}

TEST_F(RKTRESTServiceTest, SignsRequests) {
    answer(200, "{}");
    const auto service = ownService();
    service->credentials()->setCredentialType("Basic");
    validate(*service);
    EXPECT_THAT(sentHeader("Authorization"), Optional(std::string("Basic dTpw")));
    service->credentials()->setUser(std::nullopt);
    service->credentials()->setToken("t");
    validate(*service);
    EXPECT_THAT(sentHeader("Authorization"), Optional(std::string("Basic KG51bGwpOnQ=")));
    service->credentials()->setCredentialType("OAuth2");
    validate(*service);
    EXPECT_THAT(sentHeader("Authorization"), Optional(std::string("Bearer t")));
    service->credentials()->setToken(std::nullopt);
    validate(*service);
    EXPECT_THAT(sentHeader("Authorization"), Optional(std::string("Bearer (null)")));
}

TEST_F(RKTRESTServiceTest, NeverSendsATokenThatWouldAddAHeader) {
    const auto service = ownService();
    service->credentials()->setCredentialType("OAuth2");
    service->credentials()->setToken("t\r\nX-Forged: 1");
    ASSERT_TRUE(validate(*service).has_value());
    EXPECT_EQ(origin.server.requestCount(), 0U);
}

TEST_F(RKTRESTServiceTest, FailsInTheSessionWithoutAURL) {
    const auto service = ownService();
    service->credentials()->setURL(std::nullopt);
    const auto error = validate(*service);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), RKTError::NSURLErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSURLErrorUnsupportedURL);
}

TEST_F(RKTRESTServiceTest, KnowsNothingOfAnAccountWithoutCredentials) {
    const auto service = ownService();
    service->setCredentials(nullptr);
    EXPECT_EQ(validate(*service)->code(), RKTError::NSURLErrorUnsupportedURL);
    EXPECT_EQ(list(*service)->error()->code(), RKTError::NSURLErrorUnsupportedURL);
}

TEST_F(RKTRESTServiceTest, StartsNothingWithoutASession) {
    const auto service = ownService();
    const auto session = service->URLSession();
    service->setURLSession(nullptr);
    EXPECT_EQ(service->validateCredentialsWithCompletionHandler(nullptr), nullptr);
    EXPECT_EQ(service->fetchRepositoriesWithRequest(nullptr, nullptr), nullptr);
    service->setURLSession(session);
}

TEST_F(RKTRESTServiceTest, UsesCredentialsThatWereSetAnew) {
    answer(200, "{}");
    const auto service = ownService();
    const auto other = service->credentials()->copyWithZone();
    other->setCredentialType("Basic");
    service->setCredentials(other);
    validate(*service);
    EXPECT_THAT(sentHeader("Authorization"), Optional(std::string("Basic dTpw")));
}

TEST_F(RKTRESTServiceTest, ParsesBeforeItLooksAtTheStatus) {
    const auto service = ownService();
    const auto outcome = [&](unsigned status, const char* body) {
        answer(status, body);
        return validate(*service);
    };
    EXPECT_EQ(outcome(200, "{}"), std::nullopt);
    EXPECT_EQ(outcome(200, "[1]"), std::nullopt);
    EXPECT_EQ(outcome(200, ""), std::nullopt);
    EXPECT_EQ(outcome(204, ""), std::nullopt);
    EXPECT_EQ(outcome(299, "{}"), std::nullopt);
    expectParserError(outcome(200, errorPage));
    expectParserError(outcome(200, "null"));
    expectParserError(outcome(200, " "));
    expectParserError(outcome(404, errorPage));
    expectParserError(outcome(502, errorPage));
    expectHTTPError(outcome(300, "{}"), 300);
    expectHTTPError(outcome(500, ""), 500);
    expectHTTPError(outcome(401, R"({"message": "x"})"), RKTServiceErrorUnauthorized, "x");
    expectHTTPError(outcome(403, R"([{"message": "x"}])"), 403);
    expectHTTPError(outcome(422, R"({"message": ["x"]})"), 422);
}

TEST_F(RKTRESTServiceTest, LooksAtTheStatusBeforeItParses) {
    const auto service = otherService();
    const auto outcome = [&](unsigned status, const char* body) {
        answer(status, body);
        return validate(*service);
    };
    EXPECT_EQ(outcome(200, "{}"), std::nullopt);
    expectParserError(outcome(200, ""));
    expectParserError(outcome(204, ""));
    expectParserError(outcome(200, errorPage));
    expectHTTPError(outcome(500, errorPage), 500);
    expectHTTPError(outcome(500, ""), 500);
    expectHTTPError(outcome(401, R"({"message": "x"})"), RKTServiceErrorUnauthorized, "x");
    expectHTTPError(outcome(403, R"([{"message": "x"}])"), 403);
}

TEST_F(RKTRESTServiceTest, DescribesAFailureByItsStatus) {
    answer(404, R"({"message": "no such user"})");
    EXPECT_EQ(validate(*ownService())->localizedDescription(), "Not Found");
}

TEST_F(RKTRESTServiceTest, ReadsAPageOfElements) {
    answer(200, R"([{"name": "one"}, 5, {"name": "two"}])");
    const auto result = list(*ownService());
    EXPECT_EQ(result->error(), std::nullopt);
    EXPECT_EQ(result->linkRelations(), std::nullopt);
    ASSERT_EQ(result->results()->size(), 2U);
    EXPECT_THAT(result->results()->back()->name(), Optional(std::string("two")));
    EXPECT_THAT(result->page(), Optional(RKTNumber(1)));
    EXPECT_THAT(result->totalNumberOfPages(), Optional(RKTNumber(0)));
}

TEST_F(RKTRESTServiceTest, ReadsAPageOfValues) {
    answer(200, R"({"values": [{"name": "one"}], "page": 9})");
    const auto result = list(*otherService());
    ASSERT_EQ(result->results()->size(), 1U);
    EXPECT_THAT(result->page(), Optional(RKTNumber(1)));
}

TEST_F(RKTRESTServiceTest, TakesAPageWithoutValuesForEmpty) {
    for (const char* body : {"{}", R"({"values": {"name": "one"}})", R"({"values": null})"}) {
        answer(200, body);
        const auto result = list(*otherService());
        EXPECT_THAT(result->results(), Optional(testing::IsEmpty())) << body;
        EXPECT_THAT(result->page(), Optional(RKTNumber(1))) << body;
    }
}

TEST_F(RKTRESTServiceTest, GivesNeitherErrorNorResultsForAPageOfAnotherType) {
    const auto expectNeither = [&](RKTService& service, const char* body) {
        answer(200, body);
        const auto result = list(service);
        EXPECT_EQ(result->error(), std::nullopt) << body;
        EXPECT_EQ(result->results(), std::nullopt) << body;
        EXPECT_EQ(result->page(), std::nullopt) << body;
        EXPECT_EQ(result->totalNumberOfPages(), std::nullopt) << body;
    };
    expectNeither(*ownService(), R"({"name": "one"})");
    expectNeither(*ownService(), "");
    expectNeither(*otherService(), R"([{"name": "one"}])");
}

TEST_F(RKTRESTServiceTest, FillsOnlyErrorAndLinksOfAFailedListing) {
    answer(500, "{}", {{"Link", "<https://h/?page=2>; rel=\"next\""}});
    const auto result = list(*ownService());
    expectHTTPError(result->error(), 500);
    EXPECT_THAT(result->linkRelations(), Optional(ElementsAre(Key("next"))));
    EXPECT_EQ(result->results(), std::nullopt);
    EXPECT_EQ(result->page(), std::nullopt);
    EXPECT_EQ(result->totalNumberOfPages(), std::nullopt);
}

TEST_F(RKTRESTServiceTest, ReadsTheTotalFromTheLastLink) {
    const auto service = ownService();
    const auto total = [&](const std::string& link) {
        answer(200, "[]", {{"Link", link}});
        return list(*service)->totalNumberOfPages()->integerValue();
    };
    EXPECT_EQ(total("<https://h/?page=7>; rel=\"last\""), 7);
    EXPECT_EQ(total("<https://h/?page=7&page=8>; rel=\"last\""), 8);
    EXPECT_EQ(total("</r?per_page=9&page=%37>; rel=\"last\""), 7);
    EXPECT_EQ(total("<https://h/?page=7>; rel=\"next\""), 0);
    EXPECT_EQ(total("<https://h/?per_page=7>; rel=\"last\""), 0);
    EXPECT_EQ(total("<https://h/?page>; rel=\"last\""), 0);
    EXPECT_EQ(total("<https://h/?page=x>; rel=\"last\""), 0);
    EXPECT_EQ(total("<https://h/?page=12x>; rel=\"last\""), 12);
}

TEST_F(RKTRESTServiceTest, EchoesTheRequestedPage) {
    answer(200, "[]");
    const auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setPage(3);
    request->setCountPerPage(10);
    const auto result = list(*ownService(), request);
    EXPECT_THAT(result->page(), Optional(RKTNumber(3)));
    EXPECT_EQ(origin.server.requests().back().target, "/list?page=3&count=10");
}

TEST_F(RKTRESTServiceTest, ReplacesAQueryOfTheURLByItsParameters) {
    answer(200, "[]");
    const auto service = ownService();
    service->credentials()->setURL(RKTURL::URLWithString(origin.url("/sub?a=b#c")));
    validate(*service);
    EXPECT_EQ(origin.server.requests().back().target, "/user?a=b");
    const auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setVisibility("public");
    list(*service, request);
    EXPECT_EQ(origin.server.requests().back().target, "/list?visibility=public");
}

TEST_F(RKTRESTServiceTest, PassesTransportErrorsOn) {
    origin.server.fault({}, emulator::faults::resetAfterRequest());
    const auto service = ownService();
    const auto error = validate(*service);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), RKTError::NSURLErrorDomain);
    EXPECT_EQ(error->code(), RKTError::NSURLErrorNetworkConnectionLost);
    EXPECT_EQ(list(*service)->error()->code(), RKTError::NSURLErrorNetworkConnectionLost);
}

TEST_F(RKTRESTServiceTest, ReadsTheLinksOfAnAnswerThatBrokeOff) {
    answer(200, "[{}, {}, {}]", {{"Link", "<https://h/?page=2>; rel=\"next\""}});
    origin.server.fault({}, emulator::faults::cutOffBody());
    const auto result = list(*ownService());
    EXPECT_EQ(result->error()->code(), RKTError::NSURLErrorNetworkConnectionLost);
    EXPECT_THAT(result->linkRelations(), Optional(ElementsAre(Key("next"))));
    EXPECT_EQ(result->results(), std::nullopt);
}

TEST_F(RKTRESTServiceTest, ReturnsATaskThatIsUnderWayAndMayBeCancelled) {
    auto hold = origin.server.hold({});
    const auto service = ownService();
    const auto errors = std::make_shared<Awaited<std::optional<RKTError>>>();
    const auto task = service->validateCredentialsWithCompletionHandler(
        [errors](auto error) { errors->put(std::move(error)); });
    ASSERT_NE(task, nullptr);
    EXPECT_EQ(task->state(), RKTURLSessionDataTask::State::Running);
    ASSERT_TRUE(hold.waitUntilReached());
    task->cancel();
    EXPECT_EQ(errors->first()->code(), RKTError::NSURLErrorCancelled);
}

TEST_F(RKTRESTServiceTest, ReportsACancelledListingInItsResult) {
    auto hold = origin.server.hold({});
    const auto service = ownService();
    const auto results = std::make_shared<Awaited<std::shared_ptr<RKTServiceArrayResult>>>();
    const auto task = service->fetchRepositoriesWithRequest(
        nullptr, [results](auto result) { results->put(std::move(result)); });
    ASSERT_TRUE(hold.waitUntilReached());
    task->cancel();
    const auto result = results->first();
    EXPECT_EQ(result->error()->code(), RKTError::NSURLErrorCancelled);
    EXPECT_EQ(result->results(), std::nullopt);
}

TEST_F(RKTRESTServiceTest, EndsWorkUnderWayWithItsSession) {
    auto hold = origin.server.hold({});
    auto service = RKTService::make<OwnRESTService>(credentials());
    const auto errors = std::make_shared<Awaited<std::optional<RKTError>>>();
    const auto put = [errors](auto error) { errors->put(std::move(error)); };
    service->validateCredentialsWithCompletionHandler(put);
    ASSERT_TRUE(hold.waitUntilReached());
    service->invalidateAndCancel();
    service->validateCredentialsWithCompletionHandler(put);
    service.reset();
    for (const auto& error : errors->wait(2)) {
        EXPECT_EQ(error->code(), RKTError::NSURLErrorCancelled);
    }
}

TEST_F(RKTRESTServiceTest, FinishesWorkUnderWayWithoutItsOwner) {
    answer(200, "{}");
    auto hold = origin.server.hold({});
    auto service = RKTService::make<OwnRESTService>(credentials());
    const std::weak_ptr<RKTService> weak = service;
    const auto errors = std::make_shared<Awaited<std::optional<RKTError>>>();
    service->validateCredentialsWithCompletionHandler(
        [errors](auto error) { errors->put(std::move(error)); });
    ASSERT_TRUE(hold.waitUntilReached());
    const auto queue = service->URLSession()->delegateQueue();
    service->finishTasksAndInvalidate();
    service.reset();
    EXPECT_FALSE(weak.expired());
    hold.release();
    EXPECT_EQ(errors->first(), std::nullopt);
    drain(*queue);
    EXPECT_TRUE(weak.expired());
}

TEST_F(RKTRESTServiceTest, RunsHandlersOnItsSessionsQueueOneAtATime) {
    answer(200, "{}");
    const auto service = ownService();
    const auto caller = std::this_thread::get_id();
    const auto calls = std::make_shared<Awaited<bool>>();
    const auto running = std::make_shared<std::atomic<int>>(0);
    constexpr int count = 20;
    for (int call = 0; call < count; ++call) {
        service->validateCredentialsWithCompletionHandler([=](auto error) {
            const bool alone = ++*running == 1;
            const bool elsewhere = std::this_thread::get_id() != caller;
            --*running;
            calls->put(alone && elsewhere && !error);
        });
    }
    EXPECT_THAT(calls->wait(count), testing::Each(true));
}

TEST_F(RKTRESTServiceTest, LetsAHandlerEndTheServiceAndGoOn) {
    answer(200, "{}");
    auto service = RKTService::make<OwnRESTService>(credentials());
    const std::weak_ptr<RKTService> weak = service;
    const auto queue = service->URLSession()->delegateQueue();
    const auto second = std::make_shared<Awaited<std::optional<RKTError>>>();
    auto* const object = service.get();
    object->validateCredentialsWithCompletionHandler(
        [second, service = std::move(service)](auto) mutable {
            service->invalidateAndCancel();
            service->validateCredentialsWithCompletionHandler(
                [second](auto error) { second->put(std::move(error)); });
            service.reset();
        });
    EXPECT_EQ(second->first()->code(), RKTError::NSURLErrorCancelled);
    drain(*queue);
    EXPECT_TRUE(weak.expired());
}

TEST_F(RKTRESTServiceTest, TakesEmptyHandlers) {
    answer(200, "{}");
    const auto service = ownService();
    service->validateCredentialsWithCompletionHandler(nullptr);
    service->fetchRepositoriesWithRequest(nullptr, nullptr);
    EXPECT_EQ(validate(*service), std::nullopt);
    EXPECT_TRUE(origin.server.waitForRequests(3));
}

TEST_F(RKTRESTServiceTest, AsksForOneAccountAlthoughAnotherComesMeanwhile) {
    answer(401, R"({"message": "first-password is wrong"})");
    const auto account = [](const std::string& url, const char* user, const char* password) {
        auto made = credentialsFor("Own", url, user, password);
        made->setCredentialType("Basic");
        return made;
    };
    const auto first = account(origin.server.httpsURL(), "first", "first-password");
    const auto second = account("https://127.0.0.1:1/", "second", "second-password");
    const auto service = RKTService::make<ServiceOfManyAccounts>(first);
    const auto lasting = endedWithItsLastUse(service);
    service->changeAccount = [raw = service.get(), second] { raw->setCredentials(second); };

    expectHTTPError(validate(*lasting), RKTServiceErrorUnauthorized, "*** is wrong");
    service->setCredentials(first);
    expectHTTPError(list(*lasting)->error(), RKTServiceErrorUnauthorized, "*** is wrong");

    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].target, "/users/first");
    EXPECT_EQ(requests[1].target, "/list");
    for (const auto& request : requests) {
        EXPECT_THAT(request.headers.get("Authorization"),
                    Optional(std::string("Basic Zmlyc3Q6Zmlyc3QtcGFzc3dvcmQ=")));
    }
}

TEST_F(RKTRESTServiceTest, ReadsAPageWhileAnotherThreadSetsCredentials) {
    answer(200, "[]");
    const auto service = ownService();
    const auto one = credentials();
    const auto other = credentials();
    other->setCredentialType("Basic");
    const std::jthread writer([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            service->setCredentials(one);
            service->setCredentials(other);
        }
    });
    for (int round = 0; round < 50; ++round) {
        EXPECT_EQ(list(*service)->error(), std::nullopt);
    }
    for (const auto& request : origin.server.requests()) {
        const auto authorization = request.headers.get("Authorization");
        EXPECT_TRUE(!authorization || authorization == "Basic dTpw");
    }
}

}  // namespace
