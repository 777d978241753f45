#pragma once

#include <KorvoGitService/RKTService.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvogit {

constexpr const char* clientSecretVariable = "KORVOGIT_CLIENT_SECRET";

/// Who signs in where, for which application: the options that all subcommands for OAuth2 share.
/// The client secret comes from that variable.
class OAuthOptions {
public:
    explicit OAuthOptions(CLI::App& command);
    OAuthOptions(const OAuthOptions&) = delete;
    OAuthOptions& operator=(const OAuthOptions&) = delete;

    CLI::Option* clientIDOption() { return clientIDOption_; }

    /// The record as far as the options describe it.
    /// @throws UsageError
    std::shared_ptr<RKTServiceCredentials> credentials() const;
    const RKTServiceClass& serviceClass() const;
    /// The service's name for a person.
    std::string serviceName() const;

private:
    std::string serviceType_;
    std::optional<std::string> clientID_;
    std::optional<std::vector<std::string>> scopes_;
    std::optional<std::string> user_;
    CLI::Option* clientIDOption_ = nullptr;
};

/// What to tell when a service has no sign-in with OAuth2: domain "RKTInvalidArgumentException",
/// code 0.
RKTError errorForMissingSignIn(const std::string& serviceName);

}  // namespace korvogit
