// A session's cookies in libcurl's engine.

#pragma once

#include <curl/curl.h>

#include <functional>
#include <utility>

#include "support/session/Loader.h"

namespace rkt {

/// Holds a share handle for cookies alone, made by the first transfer that uses it. Used on the
/// loader's thread only, hence without locks; when the jar goes, on whatever thread, the handle
/// goes back to that thread to be freed.
class CurlCookieJar : public CookieJar {
public:
    using Discard = std::function<void(CURLSH*)>;

    explicit CurlCookieJar(Discard discard) : discard_(std::move(discard)) {}
    ~CurlCookieJar() override {
        if (share_) discard_(share_);
    }

    CURLSH* share() {
        if (!share_) {
            share_ = curl_share_init();
            curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
        }
        return share_;
    }

private:
    const Discard discard_;
    CURLSH* share_ = nullptr;
};

}  // namespace rkt
