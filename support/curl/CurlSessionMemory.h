// A session's cookies and TLS sessions in libcurl's engine.

#pragma once

#include <curl/curl.h>

#include <array>
#include <memory>
#include <mutex>

#include "support/curl/CurlHandles.h"
#include "support/session/Loader.h"

namespace rkt {

/// Holds a share handle with locks: transfers take it up and let go of it on their callers'
/// threads, while others use it on the loader's.
class CurlSessionMemory : public SessionMemory {
public:
    CurlSessionMemory() {
        curl_share_setopt(share(), CURLSHOPT_LOCKFUNC, &CurlSessionMemory::lock);
        curl_share_setopt(share(), CURLSHOPT_UNLOCKFUNC, &CurlSessionMemory::unlock);
        curl_share_setopt(share(), CURLSHOPT_USERDATA, this);
        curl_share_setopt(share(), CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
        curl_share_setopt(share(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    }

    CURLSH* share() { return share_.get(); }

private:
    static void lock(CURL*, curl_lock_data data, curl_lock_access, void* memory) {
        static_cast<CurlSessionMemory*>(memory)->mutexes_[data].lock();
    }
    static void unlock(CURL*, curl_lock_data data, void* memory) {
        static_cast<CurlSessionMemory*>(memory)->mutexes_[data].unlock();
    }

    std::array<std::mutex, CURL_LOCK_DATA_LAST> mutexes_;
    const std::unique_ptr<CURLSH, CloseShare> share_{curl_share_init()};
};

}  // namespace rkt
