// A session's cookies and TLS sessions in libcurl's engine.

#pragma once

#include <curl/curl.h>

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>

#include "support/curl/CurlHandles.h"
#include "support/session/Loader.h"

namespace rkt {

/// More cookies of a session, or bytes of them, are all forgotten. A service sets a handful,
/// browsers keep some 180 of a site.
constexpr std::size_t maximumCookies = 300;
constexpr std::size_t maximumCookieBytes = std::size_t{256} << 10;
/// Cookies are counted after so many bytes of header lines.
constexpr std::size_t headerBytesBetweenCounts = std::size_t{64} << 10;

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

    /// Keeps the cookies within their bounds: libcurl has one for an answer's, none for all, and
    /// compares each that comes with all of its domain, while nobody else's bytes move. For the
    /// loader's thread, after each answer.
    /// @param user  a handle that has the share
    /// @param headerBytes  that the answer had
    void boundCookies(CURL* user, std::size_t headerBytes);

private:
    static void lock(CURL*, curl_lock_data data, curl_lock_access, void* memory) {
        static_cast<CurlSessionMemory*>(memory)->mutexes_[data].lock();
    }
    static void unlock(CURL*, curl_lock_data data, void* memory) {
        static_cast<CurlSessionMemory*>(memory)->mutexes_[data].unlock();
    }

    std::size_t headerBytesSinceCount_ = 0;
    std::array<std::mutex, CURL_LOCK_DATA_LAST> mutexes_;
    const std::unique_ptr<CURLSH, CloseShare> share_{curl_share_init()};
};

}  // namespace rkt
