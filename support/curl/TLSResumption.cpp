#include "support/curl/TLSResumption.h"

#include <openssl/ssl.h>

#include <array>
#include <atomic>
#include <string_view>

namespace rkt {
namespace {

using NewSession = int (*)(SSL*, SSL_SESSION*);

// libcurl's own: the same for all its contexts.
std::atomic<NewSession> keep = nullptr;

// What a kept session is marked with: a place, as far from the first as connections have resumed in
// a row. A session that comes over a connection which resumed one has that one's mark.
std::array<char, maximumResumptions> marks;

int markIndex() {
    static const int index = SSL_SESSION_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

char* nextMark(const SSL* connection, const SSL_SESSION* session) {
    auto* const mark = static_cast<char*>(SSL_SESSION_get_ex_data(session, markIndex()));
    return mark && SSL_session_reused(connection) == 1 ? mark + 1 : marks.data();
}

int keepCopy(SSL* connection, SSL_SESSION* session) {
    auto* const mark = nextMark(connection, session);
    if (mark == marks.data() + marks.size()) return 0;
    auto* const copy = SSL_SESSION_dup(session);
    const bool kept = copy && SSL_SESSION_set_ex_data(copy, markIndex(), mark) == 1 &&
                      keep.load()(connection, copy) == 1;
    if (!kept) SSL_SESSION_free(copy);
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

// Others hand over a context of their own kind.
bool isOnOpenSSL() {
    static const bool is = [] {
        const char* const library = curl_version_info(CURLVERSION_NOW)->ssl_version;
        return library && std::string_view(library).starts_with("OpenSSL/");
    }();
    return is;
}

}  // namespace

void keepTLSSessionsResumable(CURL* handle) {
    if (isOnOpenSSL()) curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &prepare);
}

}  // namespace rkt
