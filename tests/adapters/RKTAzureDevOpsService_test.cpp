#include "KorvoGitService/RKTAzureDevOpsService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KorvoGitService/RKTException.h"
#include "tests/helpers/Adapters.h"

namespace {

using testing::IsEmpty;
using testing::Optional;
using testing::StartsWith;
using testing::ThrowsMessage;

constexpr const char* serviceTypes[] = {"AzureDevOps", "AzureDevOpsServer"};

const RKTServiceClass& adapterClass() {
    return *RKTAzureDevOpsService::serviceClass();
}

TEST(RKTAzureDevOpsServiceClass, ServesBothTypes) {
    for (const char* serviceType : serviceTypes) {
        EXPECT_EQ(RKTService::classForServiceType(serviceType), &adapterClass());
        const auto service = serviceWith(credentialsFor(serviceType));
        EXPECT_TRUE(isOfClass<RKTAzureDevOpsService>(*service));
    }
}

TEST(RKTAzureDevOpsServiceClass, NamesItsTypesForPeople) {
    EXPECT_THAT(adapterClass().localizedNameForServiceType("AzureDevOps"),
                Optional(std::string("Azure DevOps")));
    EXPECT_THAT(adapterClass().localizedNameForServiceType("AzureDevOpsServer"),
                Optional(std::string("Azure DevOps Server")));
    EXPECT_EQ(adapterClass().localizedNameForServiceType("GitHub"), std::nullopt);
    EXPECT_EQ(adapterClass().localizedNameForServiceType(""), std::nullopt);
}

TEST(RKTAzureDevOpsServiceClass, OffersNoWayToSignIn) {
    for (const char* serviceType : serviceTypes) {
        EXPECT_THAT(adapterClass().supportedCredentialTypesForServiceType(serviceType), IsEmpty());
        EXPECT_EQ(adapterClass().personalAccessTokenHelpURLForServiceType(serviceType),
                  std::nullopt);
    }
}

TEST(RKTAzureDevOpsServiceClass, HasNoAddressAndNeedsNone) {
    for (const char* serviceType : serviceTypes) {
        EXPECT_EQ(adapterClass().defaultURLForServiceType(serviceType), std::nullopt);
        EXPECT_FALSE(adapterClass().requiresCustomURLForServiceType(serviceType));
    }
}

TEST(RKTAzureDevOpsServiceClass, HasNoEndpointsForSigningIn) {
    const RKTServiceCredentials credentials("AzureDevOps", "OAuth2");
    EXPECT_THAT([&] { adapterClass().OAuth2AuthorizeURLForCredentials(credentials); },
                ThrowsMessage<RKTInvalidArgumentException>(
                    "OAuth2AuthorizeEndpointForCredentials: must be overridden by subclasses."));
    EXPECT_THAT([&] { adapterClass().OAuth2AccessTokenEndpointForCredentials(credentials); },
                ThrowsMessage<RKTInvalidArgumentException>(
                    "OAuth2AccessTokenEndpointForCredentials: must be overridden by subclasses."));
    EXPECT_EQ(adapterClass().OAuth2AuthorizeAdditionalParamtersForCredentials(credentials),
              std::nullopt);
}

TEST(RKTAzureDevOpsService, HasNoNetworkOperations) {
    for (const char* serviceType : serviceTypes) {
        const auto service = serviceWith(credentialsFor(serviceType));
        EXPECT_THAT(
            [&] {
                service->validateCredentialsWithCompletionHandler(
                    [](auto) { ADD_FAILURE() << "the handler was called"; });
            },
            ThrowsMessage<RKTInvalidArgumentException>(
                "validateCredentialsWithCompletionHandler: must be overridden by subclasses."));
        EXPECT_THAT(
            [&] {
                service->fetchRepositoriesWithRequest(
                    nullptr, [](auto) { ADD_FAILURE() << "the handler was called"; });
            },
            ThrowsMessage<RKTInvalidArgumentException>(
                StartsWith("fetchRepositoriesWithRequest:completionHandler: must be overridden")));
    }
}

}  // namespace
