// Why an operation failed.

#ifndef KORVOGITSERVICE_RKTERROR_H
#define KORVOGITSERVICE_RKTERROR_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTNumber.h"
#include "KorvoGitService/RKTURL.h"

/// An immutable error: a domain, a code whose meaning the domain defines, and information about it.
/// Copying one copies a pointer. Errors are delivered, never thrown.
///
/// Domains: `RKTKorvoGitServiceErrorDomain` (KorvoGitServiceErrors.h), `NSURLErrorDomain` for
/// transfers and `NSCocoaErrorDomain` for JSON. The codes of the latter two are those below; they
/// stay the same when the HTTP or JSON library underneath changes. No error that an operation on
/// credentials delivers tells their token or password, refresh token, client secret or code; where
/// a service repeats one of them (of eight characters at least), "***" stands in its place.
class RKT_EXPORT RKTError {
public:
    /// Texts, addresses and numbers by the keys below. Keys that are not among them may be added by
    /// later versions.
    using UserInfo =
        std::map<std::string, std::variant<std::string, RKTURL, RKTNumber>, std::less<>>;

    /// Keys of the user information.
    /// Text for a person, in the current language.
    static const char* const NSLocalizedDescriptionKey;
    /// Text for a person: what the service suggests; absent when it said nothing.
    static const char* const NSLocalizedRecoverySuggestionErrorKey;
    /// An RKTURL with more about the error, such as an OAuth2 error's page.
    static const char* const NSURLErrorKey;
    /// Transport errors: the failing URL without user information, query and fragment, as text;
    /// absent where that cannot be cut off safely.
    static const char* const NSURLErrorFailingURLStringErrorKey;
    /// What the HTTP or JSON library underneath said: for logs and bug reports, not for decisions.
    /// The text is absent where the failing URL is.
    static const char* const RKTUnderlyingCodeKey;
    /// The text that belongs to RKTUnderlyingCodeKey, in English.
    static const char* const RKTUnderlyingTextKey;
    /// JSON errors: the byte position of the mistake, where it is known.
    static const char* const NSJSONSerializationErrorIndex;

    /// Transfers: the codes are those of URLCode.
    static const char* const NSURLErrorDomain;
    /// JSON: the code is NSPropertyListReadCorruptError.
    static const char* const NSCocoaErrorDomain;

    /// Codes of NSURLErrorDomain.
    enum URLCode : std::int64_t {
        NSURLErrorUnknown = -1,                     ///< such as no memory; see RKTUnderlyingCodeKey
        NSURLErrorCancelled = -999,                 ///< by the caller, or with its session
        NSURLErrorBadURL = -1000,                   ///< no host, or what cannot be sent
        NSURLErrorTimedOut = -1001,                 ///< see RKTNetworkSettings
        NSURLErrorUnsupportedURL = -1002,           ///< none, or not of http or https
        NSURLErrorCannotFindHost = -1003,           ///< the proxy's name too
        NSURLErrorCannotConnectToHost = -1004,      ///< refused, by the proxy too
        NSURLErrorNetworkConnectionLost = -1005,    ///< before the end of the answer
        NSURLErrorHTTPTooManyRedirects = -1007,     ///< more than 20
        NSURLErrorNotConnectedToInternet = -1009,   ///< there is no way to any network
        NSURLErrorBadServerResponse = -1011,        ///< not HTTP, or a redirect to http
        NSURLErrorCannotDecodeRawData = -1015,      ///< damaged compressed data
        NSURLErrorCannotDecodeContentData = -1016,  ///< an unknown coding
        NSURLErrorDataLengthExceedsMaximum = -1103,         ///< maximumBodySize
        NSURLErrorSecureConnectionFailed = -1200,           ///< no TLS, or an unreadable CA file
        NSURLErrorServerCertificateHasBadDate = -1201,      ///< has expired
        NSURLErrorServerCertificateUntrusted = -1202,       ///< another name, self-signed
        NSURLErrorServerCertificateHasUnknownRoot = -1203,  ///< of an unknown authority
        NSURLErrorServerCertificateNotYetValid = -1204,     ///< begins in the future
    };
    /// Code of NSCocoaErrorDomain: the text is not JSON that can be read.
    static constexpr std::int64_t NSPropertyListReadCorruptError = 3840;

    /// `errorWithDomain:code:userInfo:`
    RKTError(std::string domain, std::int64_t code, UserInfo userInfo = {});

    /// To be compared with the three domains; decides what the code means.
    const std::string& domain() const;
    /// Stable from one version to the next, so that an application may decide by it.
    std::int64_t code() const;
    /// Lives as long as this error or a copy of it.
    const UserInfo& userInfo() const;

    /// The text under NSLocalizedDescriptionKey, or else one made of domain and code; never empty.
    std::string localizedDescription() const;
    /// What the service itself said, in its own language; nothing when it said nothing. It is a
    /// stranger's text: a terminal must not get its control characters.
    std::optional<std::string> localizedRecoverySuggestion() const;
    /// The URL under NSURLErrorKey.
    std::optional<RKTURL> URL() const;

    /// Same domain, code and user information.
    bool operator==(const RKTError& other) const;

private:
    struct Content;
    std::shared_ptr<const Content> content_;
};

#endif
