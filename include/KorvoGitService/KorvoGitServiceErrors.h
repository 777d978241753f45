// The library's own errors.

#ifndef KORVOGITSERVICE_KORVOGITSERVICEERRORS_H
#define KORVOGITSERVICE_KORVOGITSERVICEERRORS_H

#include <cstdint>

#include "KorvoGitService/RKTExport.h"

/// The domain of every error that the library itself makes. Its codes are those below and, for a
/// request that a service answered with another status outside 200…299 than 401, that HTTP status.
RKT_EXPORT extern const char* const RKTKorvoGitServiceErrorDomain;

enum RKTServiceErrorCode : std::int64_t {
    /// HTTP status 401: the service does not accept the credentials.
    RKTServiceErrorUnauthorized = 1001,

    /// OAuth2 error answers (RFC 6749 sections 4.1.2.1 and 5.2). Their description is what the
    /// provider sent as "error_description", or else a text of the library's; their NSURLErrorKey
    /// its "error_uri".
    RKTServiceErrorOAuth2Unknown = 2000,             ///< any "error" that is none of the following
    RKTServiceErrorOAuth2InvalidRequest = 2001,      ///< "invalid_request"
    RKTServiceErrorOAuth2UnauthorizedClient = 2002,  ///< "unauthorized_client"
    RKTServiceErrorOAuth2AccessDenied = 2003,        ///< "access_denied": the person refused
    RKTServiceErrorOAuth2UnsupportedResponseType = 2004,  ///< "unsupported_response_type"
    RKTServiceErrorOAuth2InvalidScope = 2005,             ///< "invalid_scope"
    RKTServiceErrorOAuth2ServerError = 2006,              ///< "server_error"
    RKTServiceErrorOAuth2TemporarilyUnavailable = 2007,   ///< "temporarily_unavailable"

    /// The answer to a token request is neither JSON (an object) nor a form.
    RKTServiceErrorOAuth2InvalidResponse = 2098,
    /// The redirect's "state" is not the one that was sent: the answer may be forged (RFC 6749
    /// section 10.12).
    RKTServiceErrorOAuth2StateMismatch = 2099,
};

#endif
