#include <memory>
#include <utility>

#include "Command.h"
#include "CommonOptions.h"
#include "DisplayText.h"
#include "ErrorReport.h"
#include "ExitStatus.h"
#include "Format.h"
#include "NetworkOptions.h"
#include "OAuthOptions.h"
#include "Secret.h"
#include "SignInOutput.h"
#include "StandardStreams.h"
#include "TokenUpdate.h"

namespace korvogit {

namespace {

/// What all steps of a sign-in take.
struct StepOptions {
    explicit StepOptions(CLI::App& command) : oauth(command) {
        addURLOption(command, "--redirect-url,--redirect-uri", redirectURL,
                     "Where the service sends the browser back to")
            ->group("Sign-in");
        addTextOption(command, "--state", state, "Value that the redirect must bring back")
            ->group("Sign-in")
            ->type_name("TEXT");
        addFormatOption(command, format, {Format::Table, Format::Json});
    }

    std::shared_ptr<RKTServiceCredentials> credentials() const {
        auto record = oauth.credentials();
        record->setOAuthRedirectURL(redirectURL);
        record->setOAuthState(state);
        return record;
    }

    OAuthOptions oauth;
    std::optional<RKTURL> redirectURL;
    std::optional<std::string> state;
    Format format;
};

struct TokenOptions : StepOptions {
    explicit TokenOptions(CLI::App& command) : StepOptions(command), network(command) {}

    NetworkOptions network;
    std::optional<std::string> code;
    bool codeFromStandardInput = false;
    bool isRefresh = false;
};

int authorizeURL(const StepOptions& options) {
    const auto credentials = options.credentials();
    std::optional<RKTURL> url;
    std::optional<RKTError> error;
    try {
        url = options.oauth.serviceClass().OAuth2AuthorizeURLForCredentials(*credentials);
    } catch (const RKTInvalidArgumentException&) {
        error = errorForMissingSignIn(options.oauth.serviceName());
    }
    if (options.format == Format::Json) {
        Json json = signInJSON(error, *credentials);
        json["authorizeURL"] = toJson(url);
        writeOutput(jsonText(json));
    } else if (error) {
        report(*error, options.oauth.serviceName());
    } else {
        writeOutput(url.value().absoluteString() + "\n");
    }
    return exitStatus(error, 0);
}

int verify(const StepOptions& options, const RKTURL& responseURL) {
    const auto credentials = options.credentials();
    const auto error = takeCode(options.oauth.serviceClass(), *credentials, responseURL);
    if (options.format == Format::Json) {
        writeOutput(jsonText(signInJSON(error, *credentials)));
    } else if (error && error->domain() == RKTError::NSURLErrorDomain) {
        complain(
            error->localizedDescription(),
            {"Nothing was refused. Give the whole address, with all that follows its \"?\"; if "
             "it was whole, begin the sign-in anew."});
    } else if (error) {
        report(*error, options.oauth.serviceName());
    } else {
        writeOutput(displayText(credentials->OAuthCode().value()) + "\n");
    }
    return exitStatus(error, 0);
}

int token(const TokenOptions& options) {
    options.network.apply();
    const auto credentials = options.credentials();
    credentials->setOAuthCode(
        options.codeFromStandardInput
            ? secretFromStandardInput(options.isRefresh ? "refresh token" : "code")
            : options.code);
    Answer<std::optional<RKTError>> answer;
    try {
        answer = updateToken(options.oauth.serviceClass(), options.oauth.serviceName(), credentials,
                             options.isRefresh, std::make_unique<SignalWatch>(),
                             options.format == Format::Table);
    } catch (const RKTInvalidArgumentException&) {
        answer.value = errorForMissingSignIn(options.oauth.serviceName());
    }
    if (options.format == Format::Json) {
        writeOutput(jsonText(signInJSON(answer.value, *credentials)));
    } else if (answer.value) {
        report(*answer.value, options.oauth.serviceName());
    } else {
        writeOutput(tokenSummary(*credentials));
    }
    return exitStatus(answer.value, answer.signal);
}

void addAuthorizeURLCommand(CLI::App& parent, Action& chosen) {
    CLI::App& command = *parent.add_subcommand(
        "authorize-url", "Print the address where a person allows or denies the sign-in");
    const auto options = std::make_shared<StepOptions>(command);
    command.footer(
        "Example:\n"
        "  korvogit oauth authorize-url --service GitHub --client-id ID --scopes repo,user \\\n"
        "      --redirect-url http://127.0.0.1:8080/callback --state \"$(openssl rand -hex 16)\"");
    command.callback([&chosen, options] { chosen = [options] { return authorizeURL(*options); }; });
}

void addVerifyCommand(CLI::App& parent, Action& chosen) {
    CLI::App& command = *parent.add_subcommand(
        "verify", "Check the address that the browser was sent back to, and print its code");
    const auto options = std::make_shared<StepOptions>(command);
    const auto responseURL = std::make_shared<std::optional<RKTURL>>();
    addURLOption(command, "--response-url", *responseURL, "The whole address")->required();
    command.footer(
        "Example:\n"
        "  korvogit oauth verify --service GitHub --state STATE \\\n"
        "      --response-url 'http://127.0.0.1:8080/callback?code=CODE&state=STATE'");
    command.callback([&chosen, options, responseURL] {
        chosen = [options, responseURL] { return verify(*options, responseURL->value()); };
    });
}

void addTokenCommand(CLI::App& parent, Action& chosen) {
    CLI::App& command = *parent.add_subcommand(
        "token", "Exchange a code for a token, or a refresh token for a new one");
    const auto options = std::make_shared<TokenOptions>(command);
    auto* code = addTextOption(command, "--code", options->code,
                               "The code or, with --refresh, the refresh token");
    code->type_name("CODE");
    command
        .add_flag("--code-stdin", options->codeFromStandardInput,
                  "Read it from the first line of standard input, so that no list of processes "
                  "shows it")
        ->disable_flag_override()
        ->excludes(code);
    command.add_flag("--refresh", options->isRefresh, "Refresh")->disable_flag_override();
    command.footer(
        "Examples:\n"
        "  KORVOGIT_CLIENT_SECRET=... korvogit oauth token --service GitHub --client-id ID \\\n"
        "      --code CODE --redirect-url http://127.0.0.1:8080/callback\n"
        "  pass show refresh-token | KORVOGIT_CLIENT_SECRET=... korvogit oauth token \\\n"
        "      --service Bitbucket --client-id ID --refresh --code-stdin --format json");
    command.callback([&chosen, options] { chosen = [options] { return token(*options); }; });
}

}  // namespace

void addOAuthCommand(CLI::App& program, Action& chosen) {
    CLI::App& command = *program.add_subcommand(
        "oauth", "The steps of an OAuth2 sign-in, one by one; 'korvogit login' does them all");
    command.require_subcommand(1);
    command.footer("The client secret comes from the variable KORVOGIT_CLIENT_SECRET.");
    addAuthorizeURLCommand(command, chosen);
    addVerifyCommand(command, chosen);
    addTokenCommand(command, chosen);
}

}  // namespace korvogit
