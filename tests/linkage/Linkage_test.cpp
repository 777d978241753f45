// What an application gets from the library that it linked, seen through the public headers alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/KorvoGitService.h"

namespace {

using testing::ElementsAre;

std::vector<std::string> registeredServiceTypes() {
    std::vector<std::string> types;
    for (const auto& [serviceType, serviceClass] : RKTService::classesByServiceType()) {
        types.push_back(serviceType);
    }
    return types;
}

// Every discovered test runs in a process of its own, so this is the registry's first use.
TEST(Linkage, AllEightServiceTypesAreRegisteredBeforeTheFirstLookUp) {
    EXPECT_THAT(registeredServiceTypes(),
                ElementsAre("AzureDevOps", "AzureDevOpsServer", "Bitbucket", "BitbucketServer",
                            "GitHub", "GitHubEnterprise", "GitLab", "GitLabSelfHosted"));
}

TEST(Linkage, AnExceptionIsCaughtByItsType) {
    EXPECT_THROW(RKTServiceCredentials(), RKTInvalidArgumentException);
}

TEST(Linkage, ClassObjectsAreFoundByTheirExportedTypes) {
    const RKTServiceClass* found = RKTService::classForServiceType(RKTServiceTypeGitHub);
    EXPECT_EQ(found, RKTGitHubService::serviceClass());
    EXPECT_NE(dynamic_cast<const RKTGitHubServiceClass*>(found), nullptr);
}

TEST(Linkage, TheVersionIsExportedWithCLinkage) {
    EXPECT_EQ(KorvoGitServiceVersionNumber, 1.0);
    EXPECT_STREQ(reinterpret_cast<const char*>(KorvoGitServiceVersionString),
                 "@(#)PROGRAM:KorvoGitService  PROJECT:KorvoGit-1\n");
}

TEST(Linkage, AServiceReportsAnUnreachableServerThroughItsHandler) {
    const auto credentials = std::make_shared<RKTServiceCredentials>(RKTServiceTypeGitHubEnterprise,
                                                                     RKTServiceCredentialTypeToken);
    // Nothing listens on the discard port of the loopback interface.
    credentials->setURL(RKTURL::URLWithString("https://127.0.0.1:9"));
    credentials->setToken("t0ken");
    const auto service = RKTService::serviceWithCredentials(credentials);
    ASSERT_NE(service, nullptr);

    std::promise<std::optional<RKTError>> outcome;
    service->validateCredentialsWithCompletionHandler(
        [&outcome](std::optional<RKTError> error) { outcome.set_value(std::move(error)); });
    const std::optional<RKTError> error = outcome.get_future().get();
    service->finishTasksAndInvalidate();

    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), "NSURLErrorDomain");
    EXPECT_EQ(error->code(), -1004);
}

}  // namespace
