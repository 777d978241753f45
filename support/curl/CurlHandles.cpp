#include "support/curl/CurlHandles.h"

#include <mutex>
#include <shared_mutex>
#include <vector>

namespace rkt {
namespace {

struct Closing {
    std::shared_mutex mutex;
    bool isOver = false;
    std::vector<CURL*> keptOpen;  // in sight of a leak check
};

Closing& closing() {
    static auto& instance = *new Closing;
    return instance;
}

}  // namespace

void CloseEasy::operator()(CURL* easy) const {
    {
        const std::shared_lock lock(closing().mutex);
        if (!closing().isOver) return curl_easy_cleanup(easy);
    }
    const std::unique_lock lock(closing().mutex);
    closing().keptOpen.push_back(easy);
}

void keepEasyHandlesOpen() {
    const std::unique_lock lock(closing().mutex);
    closing().isOver = true;
}

}  // namespace rkt
