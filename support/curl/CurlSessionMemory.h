// A session's cookies in libcurl's engine.

#pragma once

#include <curl/curl.h>

#include <array>
#include <mutex>

#include "support/session/Loader.h"

namespace rkt {

/// Holds a share handle for cookies alone, with locks: transfers take it up and let go of it on
/// their callers' threads, while others use it on the loader's.
class CurlCookieJar : public CookieJar {
public:
    CurlCookieJar() {
        curl_share_setopt(share_, CURLSHOPT_LOCKFUNC, &CurlCookieJar::lock);
        curl_share_setopt(share_, CURLSHOPT_UNLOCKFUNC, &CurlCookieJar::unlock);
        curl_share_setopt(share_, CURLSHOPT_USERDATA, this);
        curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    }
    ~CurlCookieJar() override { curl_share_cleanup(share_); }

    CURLSH* share() { return share_; }

private:
    static void lock(CURL*, curl_lock_data data, curl_lock_access, void* jar) {
        static_cast<CurlCookieJar*>(jar)->mutexes_[data].lock();
    }
    static void unlock(CURL*, curl_lock_data data, void* jar) {
        static_cast<CurlCookieJar*>(jar)->mutexes_[data].unlock();
    }

    std::array<std::mutex, CURL_LOCK_DATA_LAST> mutexes_;
    CURLSH* const share_ = curl_share_init();
};

}  // namespace rkt
