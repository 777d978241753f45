// The library as an application would set it up, led to the origin on this machine.

#pragma once

#include <KorvoGitService/KorvoGitService.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "benchmarks/common/Client.h"

namespace bench {

/// Trusts the file "ca" and finds the public services at "origin" (address:port).
inline void useOrigin(const Arguments& arguments) {
    const auto origin = arguments.text("origin");
    const auto colon = origin.rfind(':');
    RKTNetworkSettings settings;
    settings.certificateAuthorityFile = arguments.text("ca");
    const auto port = static_cast<std::uint16_t>(std::stoi(origin.substr(colon + 1)));
    for (const auto* host : {"api.github.com", "gitlab.com"}) {
        settings.hostMappings.push_back({host, 443, origin.substr(0, colon), port});
    }
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
