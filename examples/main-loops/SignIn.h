// What the examples have in common: a sign-in that has come as far as its code.

#pragma once

#include <KorvoGitService/KorvoGitService.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

/// The last step of a sign-in: PROGRAM CLIENT-ID CODE, with the client's secret in the variable
/// KORVOGIT_CLIENT_SECRET. A third and a fourth argument lead to a test server instead: the file
/// with its certificate authority, and its port on this machine.
class SignIn {
public:
    SignIn(int argumentCount, char** arguments) {
        if (argumentCount > 4) {
            RKTNetworkSettings settings;
            settings.certificateAuthorityFile = arguments[3];
            const auto port = static_cast<std::uint16_t>(std::stoi(arguments[4]));
            settings.hostMappings.push_back({"github.com", 443, "127.0.0.1", port});
            RKTNetworkSettings::setShared(settings);
        }
        if (argumentCount > 1) credentials_->setOAuthClientID(arguments[1]);
        if (argumentCount > 2) credentials_->setOAuthCode(arguments[2]);
        if (const char* secret = std::getenv("KORVOGIT_CLIENT_SECRET")) {
            credentials_->setOAuthClientSecret(secret);
        }
    }

    /// Exchanges the code for a token. `done` runs on the main thread, when the record is written;
    /// it gets the program's exit status.
    void start(std::function<void(int)> done) const {
        const auto* gitHub = RKTService::classForServiceType(RKTServiceTypeGitHub);
        gitHub->updateOAuth2AccessTokenWithCredentials(
            credentials_, false,
            [record = credentials_, done = std::move(done)](std::optional<RKTError> error) {
                if (error) {
                    std::cerr << error->localizedDescription() << '\n';
                } else {
                    std::cout << (record->token() ? "Signed in.\n" : "There is no token.\n");
                }
                done(error || !record->token() ? 1 : 0);
            });
    }

private:
    std::shared_ptr<RKTServiceCredentials> credentials_ = std::make_shared<RKTServiceCredentials>(
        RKTServiceTypeGitHub, RKTServiceCredentialTypeOAuth2);
};
