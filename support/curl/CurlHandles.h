// Owners of libcurl's handles.

#pragma once

#include <curl/curl.h>

#include <memory>
#include <vector>

namespace rkt {

struct CloseMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct CloseEasy {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

using EasyHandle = std::unique_ptr<CURL, CloseEasy>;
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

/// Whether a handle may make a second transfer. libcurl before 8.1.1 keeps a pointer to the last
/// field of the former answer, which is freed by then, and writes there when an answer begins with
/// a folded line (curl issue 11101): any server could make it.
inline bool handlesCanBeUsedAgain() {
    static const bool can = curl_version_info(CURLVERSION_NOW)->version_num >= 0x080101;
    return can;
}

/// Easy handles cost 5 KB and some microseconds to make, and remember TLS sessions; so a few are
/// kept, where that is safe.
class EasyHandlePool {
public:
    /// Null when there is no memory.
    EasyHandle take() {
        if (kept_.empty()) return EasyHandle(curl_easy_init());
        auto handle = std::move(kept_.back());
        kept_.pop_back();
        return handle;
    }

    /// @param handle  no longer in the multi handle
    void give(EasyHandle handle) {
        if (kept_.size() >= maximumKept || !handlesCanBeUsedAgain()) return;
        // Frees what a reset forgets, and while the share is there, leaves its cookies alone.
        curl_easy_setopt(handle.get(), CURLOPT_COOKIEFILE, nullptr);
        curl_easy_setopt(handle.get(), CURLOPT_SHARE,
                         nullptr);  // the next user has cookies of its own
        curl_easy_reset(handle.get());
        kept_.push_back(std::move(handle));
    }

private:
    static constexpr std::size_t maximumKept = 64;
    std::vector<EasyHandle> kept_;
};

}  // namespace rkt
