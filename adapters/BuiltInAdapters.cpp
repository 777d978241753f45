#include "KorvoGitService/RKTAzureDevOpsService.h"
#include "KorvoGitService/RKTBitbucketServerService.h"
#include "KorvoGitService/RKTBitbucketService.h"
#include "KorvoGitService/RKTGitHubService.h"
#include "KorvoGitService/RKTGitLabService.h"
#include "service/ServiceRegistry.h"

namespace rkt {

void registerBuiltInAdapters(ServiceRegistry& registry) {
    registry.setClass(RKTAzureDevOpsService::serviceClass(), RKTServiceTypeAzureDevOps);
    registry.setClass(RKTAzureDevOpsService::serviceClass(), RKTServiceTypeAzureDevOpsServer);
    registry.setClass(RKTBitbucketServerService::serviceClass(), RKTServiceTypeBitbucketServer);
    registry.setClass(RKTBitbucketService::serviceClass(), RKTServiceTypeBitbucket);
    registry.setClass(RKTGitHubService::serviceClass(), RKTServiceTypeGitHub);
    registry.setClass(RKTGitHubService::serviceClass(), RKTServiceTypeGitHubEnterprise);
    registry.setClass(RKTGitLabService::serviceClass(), RKTServiceTypeGitLab);
    registry.setClass(RKTGitLabService::serviceClass(), RKTServiceTypeGitLabSelfHosted);
}

}  // namespace rkt
