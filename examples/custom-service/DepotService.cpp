#include "DepotService.h"

#include <utility>

namespace {

// A conversion of its own: Depot says "restricted" where the record says "visibility".
std::optional<std::string> visibilityOf(std::optional<RKTNumber> restricted) {
    const bool open = restricted && !restricted->boolValue();
    return open ? RKTServiceRepositoryVisibilityPublic : RKTServiceRepositoryVisibilityPrivate;
}

// A line for each value that is read: where it stands, its type and property, and a conversion.
const RKTRepositoryMapping& repositoryMapping() {
    using namespace RKTRepositoryFields;
    using Repository = RKTServiceRepository;
    // Never destroyed: a page may still be read while the program ends.
    static const auto& mapping = *new RKTRepositoryMapping({
        {"key", string<&Repository::setIdentifier>},
        {"title", string<&Repository::setName>},
        {"about", string<&Repository::setDescriptiveText>},
        {"restricted", number<&Repository::setVisibility, visibilityOf>},
        {"owner", "handle", string<&Repository::setOwnerName>},
        {"clone", "ssh", string<&Repository::setSSHRepositoryURL, cloneURL>},
        {"clone", "https", string<&Repository::setHTTPSRepositoryURL, plainURL>},
    });
    return mapping;
}

class DepotServiceClass : public RKTServiceClass {
public:
    std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const override {
        return RKTService::make<DepotService>(credentials);
    }
    std::optional<std::string> localizedNameForServiceType(
        std::string_view serviceType) const override {
        return serviceType == DepotService::serviceType ? std::optional("Depot") : std::nullopt;
    }
    bool requiresCustomURLForServiceType(std::string_view) const override { return true; }
    std::vector<std::string> supportedCredentialTypesForServiceType(
        std::string_view) const override {
        return {RKTServiceCredentialTypeToken};
    }
};

// Runs when the program starts, or when the library that holds it is loaded.
[[maybe_unused]] const bool registered = [] {
    RKTService::setClass(DepotService::serviceClass(), DepotService::serviceType);
    return true;
}();

}  // namespace

const RKTServiceClass* DepotService::serviceClass() {
    static const auto* const object = new DepotServiceClass;
    return object;
}

std::optional<RKTURLComponents> DepotService::componentsForPath(
    const RKTServiceCredentials& credentials, std::string_view path) const {
    const auto url = credentials.URL();
    auto components = url ? RKTURLComponents::componentsWithURL(*url) : std::nullopt;
    if (components) components->setPath(RKTStringByAppendingPathComponent("/api", path));
    return components;
}

std::optional<std::string> DepotService::authorizationForCredentials(
    const RKTServiceCredentials& credentials) const {
    return bearerAuthorization(credentials);
}

std::string DepotService::validationPathForCredentials(const RKTServiceCredentials&) const {
    return "/me";
}

RKTRESTService::Listing DepotService::listingForRequest(
    std::shared_ptr<const RKTRepositoriesRequest> request) const {
    static constexpr SortFields sortFields = {nullptr, "key", "title", nullptr, nullptr, nullptr};
    Parameters parameters;
    append("order", sortField(*request, sortFields), parameters);
    appendPaging(*request, "count", parameters);
    return {"/repositories", std::move(parameters),
            readerPagedByLinks(readValues, repositoryMapping(), std::move(request))};
}
