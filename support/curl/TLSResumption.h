// TLS sessions that outlive their connections.

#pragma once

#include <curl/curl.h>

namespace rkt {

/// Connections in a row that resume, before one checks the certificate again.
constexpr int maximumResumptions = 8;

/// For every handle whose TLS sessions are kept. OpenSSL takes a session for a bad one, never to be
/// resumed, when its connection ends without the goodbye of TLS (SSL_set_shutdown(3)); so libcurl
/// (read and tried: 7.88.1) ends every connection that spoke HTTP/2. What is kept is therefore a
/// copy; with TLS 1.2, where it becomes the next connection's session, it serves once over HTTP/2.
///
/// A connection that resumes checks no certificate, and brings a ticket for the next one, so that a
/// certificate which has expired might never be noticed: that of the last one is not kept. Each
/// ticket lives as long as its server says, seven days at most (RFC 8446 section 4.6.1).
///
/// Without effect where libcurl uses another TLS library.
void keepTLSSessionsResumable(CURL* handle);

}  // namespace rkt
