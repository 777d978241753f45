#pragma once

#include <KorvoGitService/RKTServiceCredentials.h>
#include <KorvoGitService/RKTURL.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

namespace korvogit {

/// Which account to ask: the options that all subcommands for an account share.
class AccountOptions {
public:
    explicit AccountOptions(CLI::App& command);
    AccountOptions(const AccountOptions&) = delete;
    AccountOptions& operator=(const AccountOptions&) = delete;

    /// The account as the library wants it, with the service's own answers for what was not given,
    /// and the secret from where it comes. Ask for it once.
    /// @throws UsageError
    std::shared_ptr<RKTServiceCredentials> credentials() const;

    /// The service's name for a person.
    std::string serviceName() const;

private:
    std::string serviceType_;
    std::optional<RKTURL> url_;
    std::optional<std::string> user_;
    std::optional<std::string> credentialType_;
    bool tokenFromStandardInput_ = false;
};

}  // namespace korvogit
