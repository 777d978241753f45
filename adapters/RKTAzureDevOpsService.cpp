#include "KorvoGitService/RKTAzureDevOpsService.h"

#include "KorvoGitService/KorvoGitServiceBase.h"

const RKTServiceClass* RKTAzureDevOpsService::serviceClass() {
    static const RKTServiceClass* const object = new RKTAzureDevOpsServiceClass;
    return object;
}

RKTAzureDevOpsService::RKTAzureDevOpsService(Initializer initializer) : RKTService(initializer) {}

std::shared_ptr<RKTService> RKTAzureDevOpsServiceClass::initWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) const {
    return RKTService::make<RKTAzureDevOpsService>(credentials);
}

std::optional<std::string> RKTAzureDevOpsServiceClass::localizedNameForServiceType(
    std::string_view serviceType) const {
    if (serviceType == RKTServiceTypeAzureDevOps) return RKTServiceLocalizedString("Azure DevOps");
    if (serviceType == RKTServiceTypeAzureDevOpsServer) {
        return RKTServiceLocalizedString("Azure DevOps Server");
    }
    return std::nullopt;
}
