// Services against the emulator.

#pragma once

#include <KorvoGitService/RKTService.h>

#include <memory>
#include <optional>
#include <string>

#include "tests/helpers/Loading.h"

/// An emulator that every service reaches which is made while this lives: the process's network
/// settings lead to it.
class SharedOrigin : public Origin {
public:
    SharedOrigin();
    explicit SharedOrigin(emulator::ServerOptions options);
    ~SharedOrigin();
    SharedOrigin(const SharedOrigin&) = delete;
    SharedOrigin& operator=(const SharedOrigin&) = delete;

    /// The emulator's own host and port, as a request's authority.
    std::string authority() const;

private:
    RKTNetworkSettings former_;
};

/// Credentials of the type "Token" with what was given.
std::shared_ptr<RKTServiceCredentials> credentialsFor(const std::string& serviceType,
                                                      const std::optional<std::string>& url = {},
                                                      const std::optional<std::string>& user = {},
                                                      const std::optional<std::string>& token = {});

/// The same service, cancelled and ended when the last pointer that comes of this one is gone.
std::shared_ptr<RKTService> endedWithItsLastUse(std::shared_ptr<RKTService> service);

/// A service from the registry, ended with its last use. Throws when there is none.
std::shared_ptr<RKTService> serviceWith(const std::shared_ptr<const RKTServiceCredentials>&);

/// These wait for the end, and throw unless the handler ran exactly once.
std::optional<RKTError> validate(RKTService& service);
std::shared_ptr<RKTServiceArrayResult> list(
    RKTService& service, std::shared_ptr<const RKTRepositoriesRequest> request = nullptr);

/// The URL that would be asked for, found without asking: the service is ended by this.
std::optional<std::string> validationURL(RKTService& service);
std::optional<std::string> listingURL(
    RKTService& service, std::shared_ptr<const RKTRepositoriesRequest> request = nullptr);
