#include "support/session/TransportError.h"

#include <string>
#include <string_view>
#include <utility>

#include "support/LibraryBundle.h"
#include "support/RequestTarget.h"

namespace rkt {
namespace {

std::string_view descriptionKey(std::int64_t code) {
    switch (code) {
        case RKTError::NSURLErrorCancelled:
            return localizable("The request was cancelled.");
        case RKTError::NSURLErrorBadURL:
            return localizable(
                "The request cannot be sent: its address or one of its headers is not valid.");
        case RKTError::NSURLErrorTimedOut:
            return localizable("The server did not answer in time.");
        case RKTError::NSURLErrorUnsupportedURL:
            return localizable("The address is not an http or https address.");
        case RKTError::NSURLErrorCannotFindHost:
            return localizable("The server could not be found.");
        case RKTError::NSURLErrorCannotConnectToHost:
            return localizable("The server cannot be reached.");
        case RKTError::NSURLErrorNetworkConnectionLost:
            return localizable("The connection to the server was lost.");
        case RKTError::NSURLErrorHTTPTooManyRedirects:
            return localizable("The server redirected too many times.");
        case RKTError::NSURLErrorNotConnectedToInternet:
            return localizable("There is no network connection.");
        case RKTError::NSURLErrorBadServerResponse:
            return localizable("The server sent an answer that cannot be used.");
        case RKTError::NSURLErrorCannotDecodeRawData:
            return localizable("The server's answer is damaged and cannot be unpacked.");
        case RKTError::NSURLErrorCannotDecodeContentData:
            return localizable("The server's answer is packed in an unknown way.");
        case RKTError::NSURLErrorDataLengthExceedsMaximum:
            return localizable("The server's answer is too large.");
        case RKTError::NSURLErrorSecureConnectionFailed:
            return localizable("A secure connection to the server could not be made.");
        case RKTError::NSURLErrorServerCertificateHasBadDate:
            return localizable("The server's certificate has expired.");
        case RKTError::NSURLErrorServerCertificateUntrusted:
            return localizable("The server's certificate is not trusted.");
        case RKTError::NSURLErrorServerCertificateHasUnknownRoot:
            return localizable("The server's certificate is signed by an unknown authority.");
        case RKTError::NSURLErrorServerCertificateNotYetValid:
            return localizable("The server's certificate is not valid yet.");
        default:
            return localizable("The request failed.");
    }
}

RKTError::UserInfo userInfo(std::int64_t code, const std::optional<RKTURL>& url) {
    RKTError::UserInfo info;
    info.emplace(RKTError::NSLocalizedDescriptionKey, localized(descriptionKey(code)));
    const auto text = url ? failingURLString(*url) : std::string();
    if (!text.empty()) info.emplace(RKTError::NSURLErrorFailingURLStringErrorKey, text);
    return info;
}

}  // namespace

RKTError transportError(std::int64_t code, const std::optional<RKTURL>& url) {
    return {RKTError::NSURLErrorDomain, code, userInfo(code, url)};
}

RKTError transportError(const ExchangeResult::Failure& failure, const std::optional<RKTURL>& url) {
    auto info = userInfo(failure.code, url);
    info.emplace(RKTError::RKTUnderlyingCodeKey, RKTNumber(failure.underlyingCode));
    // What the HTTP library says names the host, and that may be a part of a password where the
    // address is one that is not told either.
    if (info.contains(RKTError::NSURLErrorFailingURLStringErrorKey)) {
        info.emplace(RKTError::RKTUnderlyingTextKey, failure.underlyingText);
    }
    return {RKTError::NSURLErrorDomain, failure.code, std::move(info)};
}

}  // namespace rkt
