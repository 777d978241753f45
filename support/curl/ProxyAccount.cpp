#include "support/curl/ProxyAccount.h"

#include <curl/curl.h>

#include <memory>

namespace rkt {

namespace {

struct FreeURL {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

bool canBeDecoded(CURLU* url, CURLUPart part, CURLUcode absent) {
    char* text = nullptr;
    const auto code = curl_url_get(url, part, &text, CURLU_URLDECODE);
    curl_free(text);
    return code == CURLUE_OK || code == absent;
}

}  // namespace

bool isProxyAccountUsable(const std::string& proxy) {
    const std::unique_ptr<CURLU, FreeURL> url(curl_url());
    const auto code = curl_url_set(url.get(), CURLUPART_URL, proxy.c_str(),
                                   CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME);
    // What is no URL, libcurl refuses by itself.
    if (code != CURLUE_OK) return true;
    return canBeDecoded(url.get(), CURLUPART_USER, CURLUE_NO_USER) &&
           canBeDecoded(url.get(), CURLUPART_PASSWORD, CURLUE_NO_PASSWORD);
}

bool mayHoldProxyAccount(const std::string& proxy) {
    return proxy.find_first_of("@%") != std::string::npos;
}

}  // namespace rkt
