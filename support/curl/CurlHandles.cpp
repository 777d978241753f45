#include "support/curl/CurlHandles.h"

#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

namespace rkt {
namespace {

struct Closing {
    std::shared_mutex mutex;
    bool isOver = false;
    std::vector<const void*> keptOpen;  // in sight of a leak check
};

Closing& closing() {
    static auto& instance = *new Closing;
    return instance;
}

template <class Handle, class Close>
void closeUnlessOver(Handle* handle, Close close) {
    {
        const std::shared_lock lock(closing().mutex);
        if (!closing().isOver) {
            close(handle);
            return;
        }
    }
    const std::unique_lock lock(closing().mutex);
    closing().keptOpen.push_back(handle);
}

}  // namespace

// libcurl makes one without the pair of descriptors, too, and tells when they are wanted.
MultiHandle newMulti() {
    MultiHandle multi(curl_multi_init());
    return curl_multi_wakeup(multi.get()) == CURLM_OK ? std::move(multi) : nullptr;
}

void CloseEasy::operator()(CURL* easy) const {
    closeUnlessOver(easy, curl_easy_cleanup);
}

void CloseShare::operator()(CURLSH* share) const {
    closeUnlessOver(share, curl_share_cleanup);
}

void keepHandlesOpen() {
    const std::unique_lock lock(closing().mutex);
    closing().isOver = true;
}

}  // namespace rkt
