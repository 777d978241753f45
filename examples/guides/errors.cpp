// What to tell a person of an error.

#include <future>
#include <iostream>

#include "TestServer.h"

/// What the person can do about it; the error's own texts say what happened.
static std::string adviceOnAnswer(std::int64_t code) {
    switch (code) {
        case RKTServiceErrorUnauthorized:
            return "Check the user name and the token, or sign in again.";
        case 403:
        case 429:
            return "The token may lack a permission, or the service wants a pause: try later.";
        case 404:
            return "Check the address and the user name.";
        case 410:
            return "The service no longer offers this.";
        case RKTServiceErrorOAuth2AccessDenied:
            return "The sign-in was refused at the service.";
        case RKTServiceErrorOAuth2StateMismatch:
            return "The sign-in was not completed safely: begin again.";
        default:
            return code >= 500 && code < 600 ? "The service has a problem: try later."
                                             : "The service did not accept the request.";
    }
}

static std::string adviceOnTransfer(std::int64_t code) {
    switch (code) {
        case RKTError::NSURLErrorCancelled:
            return "";  // whoever cancelled knows
        case RKTError::NSURLErrorBadURL:
        case RKTError::NSURLErrorUnsupportedURL:
        case RKTError::NSURLErrorCannotFindHost:
            return "Check the address.";
        case RKTError::NSURLErrorServerCertificateHasBadDate:
        case RKTError::NSURLErrorServerCertificateUntrusted:
        case RKTError::NSURLErrorServerCertificateHasUnknownRoot:
        case RKTError::NSURLErrorServerCertificateNotYetValid:
            return "Do not go on: ask who runs the server, and check this computer's clock.";
        case RKTError::NSURLErrorTimedOut:
        case RKTError::NSURLErrorNetworkConnectionLost:
        case RKTError::NSURLErrorNotConnectedToInternet:
        case RKTError::NSURLErrorCannotConnectToHost:
            return "Check the network connection and try again.";
        default:
            return "The server's answer cannot be used: ask who runs the server.";
    }
}

static std::string textFor(const RKTError& error) {
    std::string text = error.localizedDescription();
    if (const auto suggestion = error.localizedRecoverySuggestion()) text += " " + *suggestion;
    if (error.domain() == RKTKorvoGitServiceErrorDomain) {
        return text + "\n  " + adviceOnAnswer(error.code());
    }
    if (error.domain() == RKTError::NSURLErrorDomain) {
        return text + "\n  " + adviceOnTransfer(error.code());
    }
    return text + "\n  Is there really such a service at this address?";  // the answer is no JSON
}

static void check(const char* serviceType, const std::string& address, const std::string& user,
                  const std::string& token) {
    const auto account =
        std::make_shared<RKTServiceCredentials>(serviceType, RKTServiceCredentialTypeToken);
    account->setURL(RKTURL::URLWithString(address));
    account->setUser(user);
    account->setToken(token);
    const auto service = RKTService::serviceWithCredentials(account);
    std::promise<std::optional<RKTError>> checked;
    service->validateCredentialsWithCompletionHandler(
        [&](std::optional<RKTError> error) { checked.set_value(std::move(error)); });
    const auto error = checked.get_future().get();
    service->finishTasksAndInvalidate();
    std::cout << (error ? textFor(*error) : "The credentials are good.") << '\n';
}

int main() try {
    const TestServer server({"--fault", "close-after-request@/rest/api/1.0/users/lost"});
    check(RKTServiceTypeGitLab, "https://gitlab.com", "octavia", "demo-token-octavia");
    check(RKTServiceTypeGitLab, "https://gitlab.com", "octavia", "wrong");
    check(RKTServiceTypeGitLab, "https://gitlab.com", "octavia", "fault-bad-gzip");
    check(RKTServiceTypeGitHub, "https://github.com", "limited", "demo-token-limited");
    check(RKTServiceTypeBitbucketServer, server.url(), "lost", "demo-token-octavia");
    check(RKTServiceTypeGitLabSelfHosted, "gitlab.example.com", "octavia", "demo-token-octavia");
    return 0;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
