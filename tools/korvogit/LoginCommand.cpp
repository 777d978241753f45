// Signing in with a browser: a fresh state, a free port, the person's decision, the exchange.

#include <KorvoGitService/KorvoCore.h>
#include <KorvoGitService/KorvoGitServiceErrors.h>
#include <poll.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <system_error>
#include <utility>
#include <variant>

#include "Advice.h"
#include "Browser.h"
#include "Command.h"
#include "ErrorReport.h"
#include "ExitStatus.h"
#include "Format.h"
#include "LoginPage.h"
#include "LoopbackServer.h"
#include "OAuthOptions.h"
#include "RepositoriesTable.h"
#include "SignInOutput.h"
#include "StandardStreams.h"
#include "TokenUpdate.h"

namespace korvogit {

namespace {

constexpr const char* callbackPath = "/callback";
constexpr std::size_t longestReply = 4096;

struct LoginOptions {
    explicit LoginOptions(CLI::App& command);

    OAuthOptions oauth;
    NetworkOptions network;
    int port = 0;
    int secondsToWait = 300;
    bool withoutBrowser = false;
    bool listsRepositories = false;
    Format format;
};

LoginOptions::LoginOptions(CLI::App& command) : oauth(command), network(command) {
    oauth.clientIDOption()->required();
    command.add_option("--port", port, "Port on 127.0.0.1 to wait on; default: a free one")
        ->check(CLI::Range(1, 65535))
        ->type_name("PORT");
    command
        .add_option("--wait", secondsToWait, "Longest time to wait for the browser; default: 300")
        ->check(CLI::Range(1, 86400))
        ->type_name("SECONDS");
    command.add_flag("--no-browser", withoutBrowser, "Print the address, open no browser")
        ->disable_flag_override();
    command
        .add_flag("--list-repositories", listsRepositories,
                  "List the account's repositories afterwards without asking")
        ->disable_flag_override();
    addFormatOption(command, format, {Format::Table, Format::Json});
}

RKTError failure(const char* domain, std::int64_t code, const std::string& sentence) {
    return RKTError(domain, code, {{RKTError::NSLocalizedDescriptionKey, sentence}});
}

/// 256 bits that nobody can guess (RFC 6749 section 10.10), in hexadecimal digits.
std::string randomState() {
    std::array<unsigned char, 32> bytes = {};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::system_error(errno, std::generic_category(), "getrandom");
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

/// Whoever asks for another path, or brings nothing that a sign-in brings, was not sent by the
/// service. Whether the state is the right one, or there at all, is for the library to say.
bool isOfASignIn(const RKTURL& address) {
    if (address.path() != callbackPath) return false;
    const auto parameters = kc_queryParameters(address);
    return parameters.contains("state") || parameters.contains("code") ||
           parameters.contains("error");
}

std::string sentenceForPort(int port, const std::string& reason) {
    if (port == 0) return "No port is free to wait on for the browser (" + reason + ").";
    return "Port " + std::to_string(port) + " cannot be used (" + reason +
           "); choose another one with --port.";
}

RKTError errorForLostToken() {
    return errorForUselessAnswer(
        "A token was made, but is lost: what korvogit has to say could not be written.");
}

/// One run of the command.
class Login {
public:
    explicit Login(const LoginOptions& options)
        : options_(options), service_(options.oauth.serviceName()) {}

    int run();

private:
    bool forPeople() const { return options_.format == Format::Table; }
    std::optional<RKTError> signIn();
    void print(const std::optional<RKTError>& error) const;
    void answerBrowser(const std::optional<RKTError>& error) const;
    std::variant<RKTURL, RKTError> waitForBrowser(const RKTURL& url);
    std::optional<RKTError> take(const RKTURL& address);
    std::string sentence(const RKTError& error) const;
    std::string advice(const RKTError& error) const;
    void show(const RKTURL& url) const;
    int listRepositories() const;

    const LoginOptions& options_;
    const std::string service_;
    std::unique_ptr<LoopbackServer> server_;
    bool cameBack_ = false;  // the browser, which waits for a page
    std::unique_ptr<SignalWatch> signals_;
    std::shared_ptr<RKTServiceCredentials> credentials_;
    int signal_ = 0;
};

int Login::run() {
    options_.network.apply();
    credentials_ = options_.oauth.credentials();
    const auto serviceType = credentials_->serviceType().value();
    credentials_->setURL(options_.oauth.serviceClass().defaultURLForServiceType(serviceType));
    // Before the library starts its threads.
    signals_ = std::make_unique<SignalWatch>();
    const auto error = signIn();
    signals_.reset();
    // First, since a token that was made must not be lost when somebody ends the program while the
    // browser takes its page.
    try {
        print(error);
    } catch (const OutputError&) {
        answerBrowser(error ? error : errorForLostToken());
        throw;
    }
    answerBrowser(error);
    if (!error && forPeople()) return listRepositories();
    return exitStatus(error, signal_);
}

void Login::print(const std::optional<RKTError>& error) const {
    if (!forPeople()) {
        writeOutput(jsonText(signInJSON(error, *credentials_)));
    } else if (error) {
        const std::string plain = sentence(*error);
        const std::string said = error->localizedDescription();
        complain(plain, {plain == said ? "" : said, advice(*error)});
    } else {
        writeOutput("Signed in to " + service_ + ".\n\n" + accountSummary(*credentials_, service_));
    }
}

void Login::answerBrowser(const std::optional<RKTError>& error) const {
    if (!cameBack_) return;
    server_->answer(loginPage(
        !error, service_,
        error ? sentence(*error) : "You can go on in the window where you started korvogit."));
}

std::optional<RKTError> Login::signIn() {
    try {
        server_ = std::make_unique<LoopbackServer>(static_cast<std::uint16_t>(options_.port),
                                                   isOfASignIn);
    } catch (const std::system_error& error) {
        return failure("NSPOSIXErrorDomain", error.code().value(),
                       sentenceForPort(options_.port, error.code().message()));
    }
    credentials_->setOAuthRedirectURL(RKTURL::URLWithString(server_->origin() + callbackPath));
    credentials_->setOAuthState(randomState());
    std::optional<RKTURL> url;
    try {
        url = options_.oauth.serviceClass().OAuth2AuthorizeURLForCredentials(*credentials_);
    } catch (const RKTInvalidArgumentException&) {
        return errorForMissingSignIn(service_);
    }
    auto came = waitForBrowser(url.value());
    if (auto* error = std::get_if<RKTError>(&came)) return std::move(*error);
    cameBack_ = true;
    return take(std::get<RKTURL>(came));
}

std::variant<RKTURL, RKTError> Login::waitForBrowser(const RKTURL& url) {
    using Clock = std::chrono::steady_clock;
    show(url);
    std::unique_ptr<Browser> browser;
    if (!options_.withoutBrowser) browser = std::make_unique<Browser>(url.absoluteString());
    const auto deadline = Clock::now() + std::chrono::seconds(options_.secondsToWait);
    while (true) {
        if (browser && browser->hasFailed()) {
            complain("No browser could be opened. Please open the address yourself.",
                     {"Nothing is lost: the sign-in goes on and waits for you."});
            browser.reset();
        }
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            return failure(RKTError::NSURLErrorDomain, RKTError::NSURLErrorTimedOut,
                           "No answer came from the browser within " +
                               std::to_string(options_.secondsToWait) +
                               (options_.secondsToWait == 1 ? " second." : " seconds."));
        }
        std::array<pollfd, 3> descriptors = {
            {{server_->fileDescriptor(), POLLIN, 0},
             {signals_->fileDescriptor(), POLLIN, 0},
             {browser ? browser->fileDescriptor() : -1, POLLIN, 0}}};
        poll(descriptors.data(), descriptors.size(), static_cast<int>(left));
        if (descriptors[1].revents != 0) {
            signal_ = signals_->take();
            return failure(RKTError::NSURLErrorDomain, RKTError::NSURLErrorCancelled,
                           "The sign-in was broken off.");
        }
        if (auto address = server_->handle()) return *std::move(address);
    }
}

/// Reads what the browser brought, and exchanges it.
std::optional<RKTError> Login::take(const RKTURL& address) {
    const auto& serviceClass = options_.oauth.serviceClass();
    if (auto error = takeCode(serviceClass, *credentials_, address)) return error;
    const auto answer =
        updateToken(serviceClass, service_, credentials_, false, std::move(signals_), forPeople());
    signal_ = answer.signal;
    return answer.value;
}

std::string Login::sentence(const RKTError& error) const {
    if (error.domain() != RKTKorvoGitServiceErrorDomain) return error.localizedDescription();
    switch (error.code()) {
        case RKTServiceErrorOAuth2AccessDenied:
            return "The sign-in was denied.";
        case RKTServiceErrorOAuth2StateMismatch:
            return "The browser came back with an answer that does not belong to this sign-in.";
        case RKTServiceErrorOAuth2InvalidResponse:
            return service_ + " answered with something that cannot be read.";
        case RKTServiceErrorOAuth2ServerError:
        case RKTServiceErrorOAuth2TemporarilyUnavailable:
            return service_ + " cannot sign you in at the moment.";
        default:
            return service_ + " refused the sign-in.";
    }
}

std::string Login::advice(const RKTError& error) const {
    const bool hasCode = !credentials_->OAuthCode().value_or("").empty();
    if (!hasCode && error.code() == RKTError::NSURLErrorBadServerResponse) {
        return "Nothing was refused, and no token was made. Begin the sign-in anew.";
    }
    if (!hasCode && error.code() == RKTError::NSURLErrorTimedOut) {
        return "Nothing is broken, and no token was made. Begin anew, or wait longer with --wait "
               "SECONDS.";
    }
    return adviceFor(error);
}

void Login::show(const RKTURL& url) const {
    const std::string text = "To sign in to " + service_ +
                             ", allow it in your browser at this address:\n\n  " +
                             url.absoluteString() + "\n\n";
    forPeople() ? writeOutput(text) : writeError(text);
}

/// For a person: yes when nothing else is said.
bool personAgrees(const std::string& question) {
    if (isatty(STDIN_FILENO) == 0) return false;
    writeOutput(question + " [Y/n] ");
    const std::string reply = readLine(longestReply);
    return reply.starts_with('\n') || reply.starts_with('y') || reply.starts_with('Y');
}

int Login::listRepositories() const {
    if (!options_.listsRepositories && !personAgrees("\nList its repositories?")) {
        return ExitSuccess;
    }
    const auto [result, signal] = ask<std::shared_ptr<RKTServiceArrayResult>>(
        credentials_, service_, true, [](RKTService& service, auto handler) {
            return service.fetchRepositoriesWithRequest(nullptr, std::move(handler));
        });
    if (const auto error = errorOfListing(*result, service_)) {
        report(*error, service_);
        return exitStatus(error, signal);
    }
    writeOutput("\n" + pageTable(*result, Terminal::of(STDOUT_FILENO)));
    return ExitSuccess;
}

}  // namespace

void addLoginCommand(CLI::App& program, Action& chosen) {
    CLI::App& command = *program.add_subcommand("login", "Sign in with OAuth2 in your browser");
    const auto options = std::make_shared<LoginOptions>(command);
    command.footer(
        "The client secret comes from the variable KORVOGIT_CLIENT_SECRET. The token is shown "
        "with\n"
        "--format json only. Register http://127.0.0.1/callback with the service as the address "
        "to\n"
        "send the browser back to; a service that wants its port too needs --port.\n"
        "\n"
        "Examples:\n"
        "  KORVOGIT_CLIENT_SECRET=... korvogit login --service GitHub --client-id ID --scopes "
        "repo\n"
        "  KORVOGIT_CLIENT_SECRET=... korvogit login --service Bitbucket --client-id ID \\\n"
        "      --port 8080 --format json | jq -r .credentials.token");
    command.callback([&chosen, options] {
        if (options->listsRepositories && options->format == Format::Json) {
            throw CLI::ExcludesError("--list-repositories", "--format json");
        }
        chosen = [options] { return Login(*options).run(); };
    });
}

}  // namespace korvogit
