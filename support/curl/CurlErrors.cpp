#include "support/curl/CurlErrors.h"

#include <openssl/x509_vfy.h>

#include <cerrno>

#include "KorvoGitService/RKTError.h"

namespace rkt {
namespace {

template <class T>
T information(CURL* handle, CURLINFO what) {
    T value = 0;
    if (handle) curl_easy_getinfo(handle, what, &value);
    return value;
}

// OpenSSL's reason; none when the chain is in order, and then it is the name that does not fit.
std::int64_t certificateErrorCode(CURL* handle) {
    auto reason = information<long>(handle, CURLINFO_SSL_VERIFYRESULT);
    if (reason == X509_V_OK) reason = information<long>(handle, CURLINFO_PROXY_SSL_VERIFYRESULT);
    switch (reason) {
        case X509_V_ERR_CERT_HAS_EXPIRED:
            return RKTError::NSURLErrorServerCertificateHasBadDate;
        case X509_V_ERR_CERT_NOT_YET_VALID:
            return RKTError::NSURLErrorServerCertificateNotYetValid;
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
            return RKTError::NSURLErrorServerCertificateHasUnknownRoot;
        default:
            return RKTError::NSURLErrorServerCertificateUntrusted;
    }
}

bool isSecure(CURL* handle) {
    const auto* const url = information<const char*>(handle, CURLINFO_EFFECTIVE_URL);
    return url && std::string_view(url).starts_with("https:");
}

std::int64_t connectErrorCode(CURL* handle) {
    const auto number = information<long>(handle, CURLINFO_OS_ERRNO);
    // There was a connection, though libcurl did not see it before it was reset. What it would call
    // this a moment later must not be something else.
    if (number == ECONNRESET) {
        return isSecure(handle) ? RKTError::NSURLErrorSecureConnectionFailed
                                : RKTError::NSURLErrorNetworkConnectionLost;
    }
    return number == ENETUNREACH || number == ENETDOWN ? RKTError::NSURLErrorNotConnectedToInternet
                                                       : RKTError::NSURLErrorCannotConnectToHost;
}

// Codes that mean the answer once there can be one. A header line beyond libcurl's own limit (100
// KB) counts as want of memory, a first one that is folded as a bad argument.
std::int64_t localErrorCode(CURL* handle) {
    const bool requestSent = information<curl_off_t>(handle, CURLINFO_PRETRANSFER_TIME_T) > 0;
    return requestSent ? RKTError::NSURLErrorBadServerResponse : RKTError::NSURLErrorUnknown;
}

std::int64_t receiveErrorCode(CURL* handle, std::string_view text) {
    // A proxy that answered CONNECT, but not with 2xx.
    const auto proxyStatus = information<long>(handle, CURLINFO_HTTP_CONNECTCODE);
    if (proxyStatus != 0 && proxyStatus / 100 != 2) return RKTError::NSURLErrorCannotConnectToHost;
    // Malformed chunks come with the same code as a reset; the text alone tells them apart.
    if (text.find("chunked-encoding") != std::string_view::npos)
        return RKTError::NSURLErrorBadServerResponse;
    return RKTError::NSURLErrorNetworkConnectionLost;
}

}  // namespace

std::int64_t transportErrorCode(CURLcode code, CURL* handle, std::string_view text) {
    switch (code) {
        case CURLE_OPERATION_TIMEDOUT:
            return RKTError::NSURLErrorTimedOut;
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return RKTError::NSURLErrorCannotFindHost;
        case CURLE_COULDNT_CONNECT:
            return connectErrorCode(handle);
        case CURLE_PROXY:
            return RKTError::NSURLErrorCannotConnectToHost;
        case CURLE_URL_MALFORMAT:
            return RKTError::NSURLErrorBadURL;
        case CURLE_OUT_OF_MEMORY:
        case CURLE_BAD_FUNCTION_ARGUMENT:
            return localErrorCode(handle);
        case CURLE_RECV_ERROR:
            return receiveErrorCode(handle, text);
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_SEND_ERROR:
        case CURLE_HTTP2:
        case CURLE_HTTP2_STREAM:
            return RKTError::NSURLErrorNetworkConnectionLost;
        case CURLE_UNSUPPORTED_PROTOCOL:  // HTTP/0.9; other schemes do not come here
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_BAD_CONTENT_ENCODING:
            return RKTError::NSURLErrorBadServerResponse;
        case CURLE_PEER_FAILED_VERIFICATION:
            return certificateErrorCode(handle);
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_INVALIDCERTSTATUS:
        case CURLE_SSL_CRL_BADFILE:
        case CURLE_USE_SSL_FAILED:
            return RKTError::NSURLErrorSecureConnectionFailed;
        default:
            return RKTError::NSURLErrorUnknown;
    }
}

}  // namespace rkt
