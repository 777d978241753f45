// TLS sessions that outlive their connections.

#pragma once

#include <curl/curl.h>

namespace rkt {

/// For every handle whose TLS sessions are kept. OpenSSL takes a session for a bad one, never to be
/// resumed, when its connection ends without the goodbye of TLS (SSL_set_shutdown(3)); so libcurl
/// (read and tried: 7.88.1) ends every connection that spoke HTTP/2. What is kept is therefore a
/// copy. Without effect where libcurl uses another TLS library.
void keepTLSSessionsResumable(CURL* handle);

}  // namespace rkt
