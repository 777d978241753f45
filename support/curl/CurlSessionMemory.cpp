#include "support/curl/CurlSessionMemory.h"

#include <cstring>

namespace rkt {

void CurlSessionMemory::boundCookies(CURL* user, std::size_t headerBytes) {
    headerBytesSinceCount_ += headerBytes;
    if (headerBytesSinceCount_ < headerBytesBetweenCounts) return;
    headerBytesSinceCount_ = 0;
    curl_slist* first = nullptr;
    curl_easy_getinfo(user, CURLINFO_COOKIELIST, &first);
    const HeaderList cookies(first);
    std::size_t count = 0;
    std::size_t bytes = 0;
    for (const auto* cookie = first; cookie; cookie = cookie->next) {
        ++count;
        bytes += std::strlen(cookie->data);
    }
    if (count > maximumCookies || bytes > maximumCookieBytes)
        curl_easy_setopt(user, CURLOPT_COOKIELIST, "ALL");
}

}  // namespace rkt
