#include "KorvoGitService/RKTService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "KorvoGitService/RKTException.h"
#include "tests/helpers/Services.h"

namespace {

using testing::Optional;

/// An adapter of an application's own.
class OwnService : public RKTService {
public:
    explicit OwnService(Initializer initializer) : RKTService(initializer) {}
};

class OwnServiceClass : public RKTServiceClass {
public:
    std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const override {
        return RKTService::make<OwnService>(credentials);
    }
};

const OwnServiceClass ownServiceClass;

/// A registration that ends with the test.
class Registration {
public:
    Registration(const RKTServiceClass* serviceClass, std::string serviceType)
        : serviceType_(std::move(serviceType)),
          former_(RKTService::classForServiceType(serviceType_)) {
        RKTService::setClass(serviceClass, serviceType_);
    }
    ~Registration() { RKTService::setClass(former_, serviceType_); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    std::string serviceType_;
    const RKTServiceClass* former_;
};

std::shared_ptr<RKTService> baseService() {
    return endedWithItsLastUse(
        RKTService::serviceClass()->initWithCredentials(credentialsFor("GitHub")));
}

TEST(RKTServiceRegistry, KnowsTheEightBuiltInTypes) {
    std::vector<std::string> serviceTypes;
    for (const auto& [serviceType, serviceClass] : RKTService::classesByServiceType()) {
        EXPECT_NE(serviceClass, nullptr) << serviceType;
        EXPECT_EQ(RKTService::classForServiceType(serviceType), serviceClass);
        serviceTypes.push_back(serviceType);
    }
    EXPECT_THAT(serviceTypes, testing::UnorderedElementsAre(
                                  RKTServiceTypeGitHub, RKTServiceTypeGitHubEnterprise,
                                  RKTServiceTypeGitLab, RKTServiceTypeGitLabSelfHosted,
                                  RKTServiceTypeBitbucket, RKTServiceTypeBitbucketServer,
                                  RKTServiceTypeAzureDevOps, RKTServiceTypeAzureDevOpsServer));
}

TEST(RKTServiceRegistry, ComparesServiceTypesExactly) {
    EXPECT_EQ(RKTService::classForServiceType("github"), nullptr);
    EXPECT_EQ(RKTService::classForServiceType("GitHub "), nullptr);
    EXPECT_EQ(RKTService::classForServiceType(""), nullptr);
    EXPECT_EQ(RKTService::classForServiceType(std::string("Git") + "Hub"),
              RKTService::classForServiceType(RKTServiceTypeGitHub));
}

TEST(RKTServiceRegistry, GivesSnapshotsThatDoNotChange) {
    const auto before = RKTService::classesByServiceType();
    const Registration registration(&ownServiceClass, "Own");
    EXPECT_FALSE(before.contains("Own"));
    EXPECT_EQ(RKTService::classesByServiceType().size(), before.size() + 1);
}

TEST(RKTServiceRegistry, ReplacesAnEarlierClass) {
    const Registration registration(&ownServiceClass, RKTServiceTypeGitHub);
    EXPECT_EQ(RKTService::classForServiceType(RKTServiceTypeGitHub), &ownServiceClass);
    const auto service = serviceWith(credentialsFor("GitHub"));
    EXPECT_NE(std::dynamic_pointer_cast<OwnService>(service), nullptr);
}

TEST(RKTServiceRegistry, RemovesAClassThatIsSetToNull) {
    const Registration registration(nullptr, RKTServiceTypeGitHub);
    EXPECT_EQ(RKTService::classForServiceType(RKTServiceTypeGitHub), nullptr);
    EXPECT_FALSE(RKTService::classesByServiceType().contains(RKTServiceTypeGitHub));
    EXPECT_NE(RKTService::classForServiceType(RKTServiceTypeGitHubEnterprise), nullptr);
}

TEST(RKTServiceRegistry, ForgetsATypeThatItNeverKnew) {
    const auto before = RKTService::classesByServiceType();
    RKTService::setClass(nullptr, "NeverKnown");
    EXPECT_EQ(RKTService::classesByServiceType(), before);
}

TEST(RKTServiceRegistry, MakesServicesOfTheRegisteredClass) {
    const Registration registration(&ownServiceClass, "Own");
    const auto service = serviceWith(credentialsFor("Own", std::nullopt, "octocat"));
    EXPECT_NE(std::dynamic_pointer_cast<OwnService>(service), nullptr);
    EXPECT_THAT(service->credentials()->user(), Optional(std::string("octocat")));
}

TEST(RKTServiceRegistry, MakesNoServiceOfAnUnknownType) {
    EXPECT_EQ(RKTService::serviceWithCredentials(credentialsFor("GitHab")), nullptr);
    EXPECT_EQ(RKTService::serviceWithCredentials(credentialsFor("")), nullptr);
    EXPECT_EQ(RKTService::serviceWithCredentials(
                  std::make_shared<RKTServiceCredentials>(std::nullopt, "Token")),
              nullptr);
    EXPECT_EQ(RKTService::serviceWithCredentials(nullptr), nullptr);
}

TEST(RKTServiceRegistry, IsReadAndWrittenFromManyThreads) {
    constexpr int threadCount = 6;
    constexpr int rounds = 300;
    std::latch start(threadCount);
    std::vector<std::jthread> threads;
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([&start, type = "Own" + std::to_string(number)] {
            start.arrive_and_wait();
            for (int round = 0; round < rounds; ++round) {
                RKTService::setClass(&ownServiceClass, type);
                EXPECT_EQ(RKTService::classForServiceType(type), &ownServiceClass);
                EXPECT_TRUE(RKTService::classesByServiceType().contains(RKTServiceTypeGitHub));
                RKTService::setClass(nullptr, type);
                EXPECT_EQ(RKTService::classForServiceType(type), nullptr);
            }
        });
    }
}

TEST(RKTServiceClass, AnswersWithTheBaseValues) {
    const auto* base = RKTService::serviceClass();
    EXPECT_EQ(base, RKTService::serviceClass());
    EXPECT_EQ(base->localizedNameForServiceType(RKTServiceTypeGitHub), std::nullopt);
    EXPECT_EQ(base->defaultURLForServiceType(RKTServiceTypeGitHub), std::nullopt);
    EXPECT_FALSE(base->requiresCustomURLForServiceType(RKTServiceTypeGitHub));
    EXPECT_THAT(base->supportedCredentialTypesForServiceType(RKTServiceTypeGitHub),
                testing::IsEmpty());
    EXPECT_EQ(base->personalAccessTokenHelpURLForServiceType(RKTServiceTypeGitHub), std::nullopt);
}

TEST(RKTServiceClass, LeavesOAuth2EndpointsToSubclasses) {
    const RKTServiceCredentials credentials("GitHub", "OAuth2");
    const auto* base = RKTService::serviceClass();
    EXPECT_THAT([&] { base->OAuth2AuthorizeEndpointForCredentials(credentials); },
                testing::ThrowsMessage<RKTInvalidArgumentException>(
                    "OAuth2AuthorizeEndpointForCredentials: must be overridden by subclasses."));
    EXPECT_THAT([&] { base->OAuth2AccessTokenEndpointForCredentials(credentials); },
                testing::ThrowsMessage<RKTInvalidArgumentException>(
                    "OAuth2AccessTokenEndpointForCredentials: must be overridden by subclasses."));
    EXPECT_EQ(base->OAuth2AuthorizeAdditionalParamtersForCredentials(credentials), std::nullopt);
}

TEST(RKTService, HasNoPlainInitializer) {
    EXPECT_THAT([] { RKTService(); }, testing::ThrowsMessage<RKTInvalidArgumentException>(
                                          "Must be initialized using -initWithCredentials:"));
}

TEST(RKTService, LeavesItsNetworkOperationsToSubclasses) {
    const auto service = baseService();
    bool called = false;
    EXPECT_THAT(
        [&] { service->validateCredentialsWithCompletionHandler([&](auto) { called = true; }); },
        testing::ThrowsMessage<RKTInvalidArgumentException>(
            "validateCredentialsWithCompletionHandler: must be overridden by subclasses."));
    EXPECT_THAT(
        [&] {
            service->fetchRepositoriesWithRequest(std::make_shared<RKTRepositoriesRequest>(),
                                                  [&](auto) { called = true; });
        },
        testing::ThrowsMessage<RKTInvalidArgumentException>(
            "fetchRepositoriesWithRequest:completionHandler: must be overridden by subclasses."));
    drain(*service->URLSession()->delegateQueue());
    EXPECT_FALSE(called);
}

TEST(RKTService, KeepsCredentialsOfItsOwn) {
    const auto credentials = credentialsFor("GitHub", std::nullopt, "octocat", "first");
    const auto service = serviceWith(credentials);
    credentials->setToken("second");
    EXPECT_THAT(service->credentials()->token(), Optional(std::string("first")));
    service->setCredentials(credentials);
    credentials->setToken("third");
    EXPECT_THAT(service->credentials()->token(), Optional(std::string("second")));
}

TEST(RKTService, MayBeLeftWithoutCredentials) {
    const auto service =
        endedWithItsLastUse(RKTService::serviceClass()->initWithCredentials(nullptr));
    EXPECT_EQ(service->credentials(), nullptr);
}

TEST(RKTService, HasASessionOfItsOwn) {
    const auto one = baseService();
    const auto other = baseService();
    ASSERT_NE(one->URLSession(), nullptr);
    EXPECT_NE(one->URLSession(), other->URLSession());
    EXPECT_NE(one->URLSession(), RKTURLSession::sharedSession());
}

TEST(RKTService, TakesTheNetworkSettingsOfItsTime) {
    const auto former = RKTNetworkSettings::shared();
    auto settings = former;
    settings.timeoutIntervalForRequest = std::chrono::seconds(17);
    RKTNetworkSettings::setShared(settings);
    const auto service = baseService();
    RKTNetworkSettings::setShared(former);
    EXPECT_EQ(service->URLSession()->configuration().networkSettings, settings);
}

TEST(RKTService, LivesUntilItsSessionIsEnded) {
    for (const auto end :
         {&RKTService::finishTasksAndInvalidate, &RKTService::invalidateAndCancel}) {
        auto service = RKTService::serviceWithCredentials(credentialsFor("GitHub"));
        const std::weak_ptr<RKTService> weak = service;
        const auto queue = service->URLSession()->delegateQueue();
        service.reset();
        drain(*queue);
        ASSERT_FALSE(weak.expired());
        (weak.lock().get()->*end)();
        drain(*queue);
        EXPECT_TRUE(weak.expired());
    }
}

TEST(RKTService, TakesAnotherSession) {
    const auto service = baseService();
    const auto former = service->URLSession();
    const auto session = RKTURLSession::sessionWithConfiguration(
        RKTURLSessionConfiguration::ephemeralSessionConfiguration(), service->shared_from_this());
    service->setURLSession(session);
    former->invalidateAndCancel();
    EXPECT_EQ(service->URLSession(), session);
}

TEST(RKTService, DoesNothingToASessionThatItDoesNotHave) {
    const auto service = baseService();
    const auto session = service->URLSession();
    service->setURLSession(nullptr);
    service->finishTasksAndInvalidate();
    service->invalidateAndCancel();
    EXPECT_EQ(service->URLSession(), nullptr);
    session->invalidateAndCancel();
}

}  // namespace
