#include "Advice.h"

#include <KorvoGitService/KorvoGitServiceErrors.h>

namespace korvogit {

namespace {

std::string adviceForStatus(std::int64_t status) {
    switch (status) {
        case RKTServiceErrorUnauthorized:
            return "Network and address work. Check the token, when it ends and --user; 'korvogit "
                   "services' names the page where a new one is made.";
        case 403:
            return "Network and address work, and a wrong token would have been told so. See "
                   "whether it lacks a scope, needs single sign-on, or has used up its requests "
                   "of this hour.";
        case 404:
            return "The network works, and nothing says that the token is wrong. Check --url, "
                   "--service and --user.";
        case 410:
            return "Neither the token nor the network is the reason: the service has given this "
                   "up. Its documentation names what stands in its place.";
        case 429:
            return "The credentials are not the reason. Wait a while, then ask for less at a time.";
        default:
            break;
    }
    if (status >= 500) {
        return "Neither the credentials nor the command are the reason. Try again later; see the "
               "service's status page.";
    }
    return "The network works. Check --url and --service, and what was asked for: --sort, "
           "--per-page, --state.";
}

std::string adviceForSignIn(std::int64_t code) {
    switch (code) {
        case RKTServiceErrorOAuth2AccessDenied:
            return "Nothing is broken, and no token was made. Sign in again to allow it.";
        case RKTServiceErrorOAuth2StateMismatch:
            return "No token was made, and your account is untouched. Begin the sign-in anew, with "
                   "one page of it open; should it come again, somebody interferes.";
        case RKTServiceErrorOAuth2ServerError:
        case RKTServiceErrorOAuth2TemporarilyUnavailable:
            return "Neither you nor the application is the reason. Try again later.";
        case RKTServiceErrorOAuth2InvalidResponse:
            return "Your decision is not the reason. Try again; see whether a proxy answered in "
                   "the service's place.";
        case RKTServiceErrorOAuth2InvalidScope:
            return "Your account is not the reason. Check --scopes against what the application "
                   "may ask for.";
        default:
            return "Your account is not the reason. Check --client-id, the client secret and the "
                   "address to send the browser back to; a code works once and for minutes only.";
    }
}

std::string adviceForCertificate() {
    return "The token was not sent. For an authority of your own give --cacert FILE; else do not "
           "go "
           "on: somebody may stand in between.";
}

std::string adviceForTransfer(std::int64_t code) {
    switch (code) {
        case RKTError::NSURLErrorCancelled:
            return "Nothing is broken, and nothing was changed at the service. Run it again when "
                   "you like.";
        case RKTError::NSURLErrorBadURL:
        case RKTError::NSURLErrorUnsupportedURL:
            return "Nothing was sent. Give the server's address with --url, such as "
                   "https://git.example.com.";
        case RKTError::NSURLErrorTimedOut:
            return "The credentials were not refused. Try again, or wait longer with --timeout "
                   "SECONDS.";
        case RKTError::NSURLErrorCannotFindHost:
            return "The token was not sent. Check the spelling of --url, the name server and "
                   "whether you are connected.";
        case RKTError::NSURLErrorCannotConnectToHost:
        case RKTError::NSURLErrorNotConnectedToInternet:
            return "The token was not sent. Check the port in --url, the firewall, and whether a "
                   "--proxy is needed.";
        case RKTError::NSURLErrorNetworkConnectionLost:
            return "The credentials were not refused. Try again; should it stay, look at the "
                   "network or the proxy.";
        case RKTError::NSURLErrorHTTPTooManyRedirects:
            return "The credentials were not refused. Check --url: it may lead to a sign-in page.";
        case RKTError::NSURLErrorSecureConnectionFailed:
            return "The token was not sent. Check that the port in --url speaks TLS, what stands "
                   "in between, and a file that --cacert names.";
        case RKTError::NSURLErrorServerCertificateHasBadDate:
        case RKTError::NSURLErrorServerCertificateNotYetValid:
            return "The token was not sent. Check this machine's clock, then tell whoever runs the "
                   "server.";
        case RKTError::NSURLErrorServerCertificateUntrusted:
        case RKTError::NSURLErrorServerCertificateHasUnknownRoot:
            return adviceForCertificate();
        case RKTError::NSURLErrorDataLengthExceedsMaximum:
            return "The credentials were not refused. Ask for fewer repositories with --per-page.";
        default:
            return "The credentials were not refused. Try again; should it stay, see whether a "
                   "proxy changes the answers.";
    }
}

}  // namespace

std::string adviceFor(const RKTError& error) {
    const auto& domain = error.domain();
    if (domain == RKTKorvoGitServiceErrorDomain) {
        return error.code() < RKTServiceErrorOAuth2Unknown ? adviceForStatus(error.code())
                                                           : adviceForSignIn(error.code());
    }
    if (domain == RKTError::NSURLErrorDomain) return adviceForTransfer(error.code());
    if (domain == RKTError::NSCocoaErrorDomain) {
        return "The network works, but what answered is not the service's API. Check --url, and "
               "whether a proxy's or a sign-in page came.";
    }
    if (domain == "RKTInvalidArgumentException") {
        return "Nothing was sent, and other credentials change nothing. 'korvogit services' tells "
               "what each service takes.";
    }
    if (domain == "NSPOSIXErrorDomain") {
        return "Neither the service nor your account is the reason: the sign-in has not begun.";
    }
    return {};
}

}  // namespace korvogit
