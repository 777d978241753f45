#include "AccountOptions.h"

#include <KorvoGitService/RKTService.h>

#include "CommonOptions.h"
#include "Secret.h"
#include "StandardStreams.h"

namespace korvogit {

namespace {

constexpr const char* tokenVariable = "KORVOGIT_TOKEN";

std::string checkCredentialType(const std::string& text) {
    for (const char* type : {RKTServiceCredentialTypeToken, RKTServiceCredentialTypeOAuth2,
                             RKTServiceCredentialTypeBasic}) {
        if (text == type) return {};
    }
    return "must be Token, OAuth2 or Basic";
}

}  // namespace

AccountOptions::AccountOptions(CLI::App& command) {
    const auto inGroup = [](CLI::Option* option) { return option->group("Account"); };
    inGroup(addServiceOption(command, serviceType_));
    inGroup(
        addURLOption(command, "--url", url_, "Address of the server; default: the service's own"));
    inGroup(addTextOption(command, "--user", user_, "Name of the user"))->type_name("NAME");
    inGroup(command.add_option("--credential-type", credentialType_,
                               "Token, OAuth2 or Basic; default: what the service prefers"))
        ->type_name("TYPE")
        ->check(checkCredentialType);
    inGroup(command.add_flag("--token-stdin", tokenFromStandardInput_,
                             "Read the secret from the first line of standard input"))
        ->disable_flag_override();
}

std::shared_ptr<RKTServiceCredentials> AccountOptions::credentials() const {
    const RKTServiceClass& serviceClass = *RKTService::classForServiceType(serviceType_);
    const auto supported = serviceClass.supportedCredentialTypesForServiceType(serviceType_);
    const std::string preferred =
        supported.empty() ? RKTServiceCredentialTypeToken : supported.front();

    auto credentials =
        std::make_shared<RKTServiceCredentials>(serviceType_, credentialType_.value_or(preferred));
    credentials->setURL(url_ ? url_ : serviceClass.defaultURLForServiceType(serviceType_));
    credentials->setUser(user_);
    credentials->setToken(tokenFromStandardInput_ ? secretFromStandardInput("token")
                                                  : secretFromEnvironment(tokenVariable, "token"));

    if (!url_ && serviceClass.requiresCustomURLForServiceType(serviceType_)) {
        writeError("korvogit: warning: " + serviceName() +
                   " has no address of its own; give your server's with --url.\n");
    }
    if (url_ && url_->host() && !url_->path().empty() && url_->path() != "/") {
        writeError(
            "korvogit: warning: the path in --url is not used: the API is asked for at the root of "
            "the server.\n");
    }
    if (!credentials->token()) {
        hint(std::string("there is no secret; set ") + tokenVariable + " or use --token-stdin");
    }
    return credentials;
}

std::string AccountOptions::serviceName() const {
    return korvogit::serviceName(serviceType_);
}

}  // namespace korvogit
