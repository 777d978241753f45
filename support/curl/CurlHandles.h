// Owners of libcurl's handles.

#pragma once

#include <curl/curl.h>

#include <memory>

namespace rkt {

struct CloseMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using MultiHandle = std::unique_ptr<CURLM, CloseMulti>;
/// One that other threads can wake up. That takes file descriptors: null when the process has none
/// left.
MultiHandle newMulti();

/// On any thread, after the handle has left the multi handle.
struct CloseEasy {
    void operator()(CURL* easy) const;
};
/// On any thread, after the easy handles that used it.
struct CloseShare {
    void operator()(CURLSH* share) const;
};
struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

/// For one transfer: libcurl before 8.1.1 keeps a pointer to the last field of the former answer,
/// which is freed by then, and writes there when an answer begins with a folded line (curl issue
/// 11101). Any server could make it.
using EasyHandle = std::unique_ptr<CURL, CloseEasy>;
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

/// From now on easy and share handles stay open: at the exit of the process, where threads run on,
/// none may let go of TLS sessions beside or after OpenSSL's own clean-up.
void keepHandlesOpen();

}  // namespace rkt
