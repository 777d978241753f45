#include "support/curl/TLSResumption.h"

#include <openssl/ssl.h>

#include <atomic>

namespace rkt {
namespace {

using NewSession = int (*)(SSL*, SSL_SESSION*);

// libcurl's own: the same for all its contexts.
std::atomic<NewSession> keep = nullptr;

int keepCopy(SSL* connection, SSL_SESSION* session) {
    auto* const copy = SSL_SESSION_dup(session);
    if (copy && keep.load()(connection, copy) == 0) SSL_SESSION_free(copy);
    return 0;  // the session itself was not kept
}

CURLcode prepare(CURL*, void* context, void*) {
    auto* const tls = static_cast<SSL_CTX*>(context);
    if (const auto own = SSL_CTX_sess_get_new_cb(tls)) {
        keep = own;
        SSL_CTX_sess_set_new_cb(tls, keepCopy);
    }
    return CURLE_OK;
}

}  // namespace

void keepTLSSessionsResumable(CURL* handle) {
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &prepare);
}

}  // namespace rkt
