#include "benchmarks/floors/Multi.h"

#include <algorithm>
#include <utility>

#include "benchmarks/common/Client.h"

namespace floors {
namespace {

// What libcurl puts on one connection; the origin takes more.
constexpr std::size_t streamsEach = 100;

}  // namespace

Multi::Multi(const std::string& origin, const std::string& authorities, std::size_t inFlight,
             Bodies bodies, Finished finished)
    : multi_(curl_multi_init()),
      connectTo_(curl_slist_append(nullptr, ("::" + origin).c_str())),
      slots_(inFlight),
      finished_(std::move(finished)),
      connections_((inFlight + streamsEach - 1) / streamsEach) {
    curl_multi_setopt(multi_, CURLMOPT_MAX_CONCURRENT_STREAMS, static_cast<long>(streamsEach));
    curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, static_cast<long>(connections_));
    for (auto& slot : slots_) {
        slot.easy = curl_easy_init();
        curl_easy_setopt(slot.easy, CURLOPT_PRIVATE, &slot);
        curl_easy_setopt(slot.easy, CURLOPT_CONNECT_TO, connectTo_);
        curl_easy_setopt(slot.easy, CURLOPT_CAINFO, authorities.c_str());
        curl_easy_setopt(slot.easy, CURLOPT_CAPATH, nullptr);
        curl_easy_setopt(slot.easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_2TLS);
        curl_easy_setopt(slot.easy, CURLOPT_PREREQFUNCTION, &Multi::onConnection);
        curl_easy_setopt(slot.easy, CURLOPT_PREREQDATA, this);
        curl_easy_setopt(slot.easy, CURLOPT_USERAGENT, "floor");
        if (bodies == Bodies::DecodedAndDiscarded) {
            curl_easy_setopt(slot.easy, CURLOPT_ACCEPT_ENCODING, "gzip");
            curl_easy_setopt(slot.easy, CURLOPT_WRITEFUNCTION, &Multi::discard);
        } else {
            curl_easy_setopt(slot.easy, CURLOPT_WRITEFUNCTION, &Multi::onBody);
            curl_easy_setopt(slot.easy, CURLOPT_WRITEDATA, &slot);
        }
    }
}

Multi::~Multi() {
    for (auto& slot : slots_) curl_easy_cleanup(slot.easy);
    curl_slist_free_all(connectTo_);
    curl_multi_cleanup(multi_);
}

int Multi::onConnection(void* multi, char*, char*, int, int) {
    ++static_cast<Multi*>(multi)->opened_;
    return CURL_PREREQFUNC_OK;
}

std::size_t Multi::onBody(char* bytes, std::size_t size, std::size_t count, void* slot) {
    static_cast<Slot*>(slot)->body.append(bytes, size * count);
    return size * count;
}

std::size_t Multi::discard(char*, std::size_t size, std::size_t count, void*) {
    return size * count;
}

void Multi::begin(Slot& slot, const std::string& url) {
    slot.body.clear();
    curl_easy_setopt(slot.easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(slot.easy, CURLOPT_FRESH_CONNECT, toOpen_ > 0 ? 1L : 0L);
    curl_multi_add_handle(multi_, slot.easy);
    ++underWay_;
    roundsBeforeSleep_ = 2;
    if (toOpen_ == 0 || --toOpen_ > 0) return;
    while (opened_ < connections_) turn();
}

// A round in which transfers begin may drop the timers of those for which it received bytes, by a
// clock that the beginning set forward. Another round must look at them before there is a sleep.
void Multi::turn() {
    constexpr std::chrono::minutes longest(1);
    if (roundsBeforeSleep_ > 0) {
        --roundsBeforeSleep_;
    } else if (static_cast<std::size_t>(running_) == underWay_) {
        curl_multi_poll(multi_, nullptr, 0, std::chrono::milliseconds(longest).count(), nullptr);
    }
    curl_multi_perform(multi_, &running_);
    noteDone();
    if (std::chrono::steady_clock::now() - lastDone_ >= longest) {
        bench::fail("the floor hangs with " + std::to_string(running_) + " transfers in flight");
    }
}

void Multi::noteDone() {
    int left = 0;
    while (const auto* message = curl_multi_info_read(multi_, &left)) {
        long status = 0;
        char* slot = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_RESPONSE_CODE, &status);
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &slot);
        if (message->data.result != CURLE_OK || status != 200) {
            bench::fail("the floor's transfer failed with status " + std::to_string(status) + ": " +
                        curl_easy_strerror(message->data.result));
        }
        done_.push_back(reinterpret_cast<Slot*>(slot));
        lastDone_ = std::chrono::steady_clock::now();
    }
}

Multi::Slot& Multi::takeDone() {
    while (done_.empty()) turn();
    Slot& slot = *done_.front();
    done_.pop_front();
    curl_multi_remove_handle(multi_, slot.easy);
    --underWay_;
    return slot;
}

void Multi::get(std::size_t count, const std::function<std::string(std::size_t index)>& url) {
    lastDone_ = std::chrono::steady_clock::now();
    std::size_t begun = 0;
    for (; begun < std::min(count, slots_.size()); ++begun) begin(slots_[begun], url(begun));
    for (std::size_t done = 0; done < count; ++done) {
        Slot& slot = takeDone();
        finished_(slot.body);
        if (begun < count) begin(slot, url(begun++));
    }
}

}  // namespace floors
