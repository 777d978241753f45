// Azure DevOps, by name.

#ifndef KORVOGITSERVICE_RKTAZUREDEVOPSSERVICE_H
#define KORVOGITSERVICE_RKTAZUREDEVOPSSERVICE_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTService.h"

/// Holds the two Azure DevOps service types, so that a user interface can list them. It has no
/// network code: both network operations throw, as those of RKTService do, and an empty list of
/// credential types says beforehand that there is no way to sign in.
class RKT_EXPORT RKTAzureDevOpsService : public RKTService {
public:
    /// The one object of the class side; it lives as long as the process.
    static const RKTServiceClass* serviceClass();

    /// Called by make() alone; applications use `serviceWithCredentials:`.
    explicit RKTAzureDevOpsService(Initializer initializer);
};

/// The class side of RKTAzureDevOpsService.
class RKT_EXPORT RKTAzureDevOpsServiceClass : public RKTServiceClass {
public:
    std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const override;
    std::optional<std::string> localizedNameForServiceType(
        std::string_view serviceType) const override;

private:
    friend class RKTAzureDevOpsService;
    RKTAzureDevOpsServiceClass() = default;
};

#endif
