// The library as an application would set it up, led to the origin on this machine.

#pragma once

#include <KorvoGitService/KorvoGitService.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "benchmarks/common/Client.h"

namespace bench {

/// @param place  address:port
inline RKTNetworkSettings::HostMapping mapping(const std::string& host, const std::string& place) {
    const auto colon = place.rfind(':');
    return {host, 443, place.substr(0, colon),
            static_cast<std::uint16_t>(std::stoi(place.substr(colon + 1)))};
}

/// Trusts the file "ca" and finds GitHub at "origin", GitLab at "gitlab-origin".
inline void useOrigin(const Arguments& arguments) {
    RKTNetworkSettings settings;
    settings.certificateAuthorityFile = arguments.text("ca");
    settings.hostMappings = {mapping("api.github.com", arguments.text("origin")),
                             mapping("gitlab.com", arguments.text("gitlab-origin"))};
    RKTNetworkSettings::setShared(settings);
}

inline std::shared_ptr<RKTServiceCredentials> account(const std::string& serviceType) {
    auto account =
        std::make_shared<RKTServiceCredentials>(serviceType, RKTServiceCredentialTypeToken);
    const auto* serviceClass = RKTService::classForServiceType(serviceType);
    account->setURL(serviceClass->defaultURLForServiceType(serviceType));
    account->setUser("octavia");
    account->setToken("benchmark");
    return account;
}

inline std::string description(const RKTError& error) {
    return std::string(error.domain()) + " " + std::to_string(error.code());
}

}  // namespace bench
