#include "KorvoGitService/RKTService.h"
#include "core/Misuse.h"

RKTServiceClass::~RKTServiceClass() = default;

std::shared_ptr<RKTService> RKTServiceClass::initWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) const {
    return RKTService::make<RKTService>(credentials);
}

std::optional<std::string> RKTServiceClass::localizedNameForServiceType(std::string_view) const {
    return std::nullopt;
}

std::optional<RKTURL> RKTServiceClass::defaultURLForServiceType(std::string_view) const {
    return std::nullopt;
}

bool RKTServiceClass::requiresCustomURLForServiceType(std::string_view) const {
    return false;
}

std::vector<std::string> RKTServiceClass::supportedCredentialTypesForServiceType(
    std::string_view) const {
    return {};
}

std::optional<RKTURL> RKTServiceClass::personalAccessTokenHelpURLForServiceType(
    std::string_view) const {
    return std::nullopt;
}

RKTURL RKTServiceClass::OAuth2AuthorizeEndpointForCredentials(const RKTServiceCredentials&) const {
    rkt::raiseMustBeOverridden("OAuth2AuthorizeEndpointForCredentials:");
}

std::optional<std::vector<RKTURLQueryItem>>
RKTServiceClass::OAuth2AuthorizeAdditionalParamtersForCredentials(
    const RKTServiceCredentials&) const {
    return std::nullopt;
}

RKTURL RKTServiceClass::OAuth2AccessTokenEndpointForCredentials(
    const RKTServiceCredentials&) const {
    rkt::raiseMustBeOverridden("OAuth2AccessTokenEndpointForCredentials:");
}
