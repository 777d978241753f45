#include "OAuthOptions.h"

#include <utility>

#include "CommonOptions.h"
#include "Secret.h"

namespace korvogit {

namespace {

/// Appends the pieces between the commas. The empty text has none.
void appendScopes(std::string_view text, std::vector<std::string>& scopes) {
    while (!text.empty()) {
        const auto scope = text.substr(0, text.find(','));
        scopes.emplace_back(scope);
        text.remove_prefix(std::min(scope.size() + 1, text.size()));
    }
}

}  // namespace

OAuthOptions::OAuthOptions(CLI::App& command) {
    const auto inGroup = [](CLI::Option* option) { return option->group("Sign-in"); };
    inGroup(addServiceOption(command, serviceType_));
    clientIDOption_ = inGroup(addTextOption(command, "--client-id", clientID_,
                                            "Client ID that the service gave to your application"))
                          ->type_name("ID");
    inGroup(command.add_option_function<std::vector<std::string>>(
                "--scopes,--scope",
                [this](const std::vector<std::string>& texts) {
                    scopes_.emplace();
                    for (const auto& text : texts) appendScopes(text, *scopes_);
                },
                "What the token may be used for, such as repo,user; may be repeated"))
        ->type_name("SCOPE,...")
        ->allow_extra_args(false);
    inGroup(addTextOption(command, "--user", user_, "Account that the service is to suggest"))
        ->type_name("NAME");
}

std::shared_ptr<RKTServiceCredentials> OAuthOptions::credentials() const {
    auto credentials =
        std::make_shared<RKTServiceCredentials>(serviceType_, RKTServiceCredentialTypeOAuth2);
    credentials->setUser(user_);
    credentials->setOAuthClientID(clientID_);
    credentials->setOAuthClientSecret(secretFromEnvironment(clientSecretVariable, "client secret"));
    credentials->setOAuthScopes(scopes_);
    return credentials;
}

const RKTServiceClass& OAuthOptions::serviceClass() const {
    return *RKTService::classForServiceType(serviceType_);
}

std::string OAuthOptions::serviceName() const {
    return korvogit::serviceName(serviceType_);
}

RKTError errorForMissingSignIn(const std::string& serviceName) {
    return RKTError(
        "RKTInvalidArgumentException", 0,
        {{RKTError::NSLocalizedDescriptionKey, serviceName + " offers no sign-in with OAuth2."}});
}

}  // namespace korvogit
