#include "support/curl/CurlLoader.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "support/SharedNetworkSettings.h"
#include "support/ThreadPool.h"
#include "support/curl/CurlSessionMemory.h"

namespace rkt {
namespace {

// How long transfers may have to wait for the reading of results. A page of a hundred records and a
// plain handler take less than a millisecond, so this is seldom used up, and too short to be
// noticed beside a network.
constexpr std::chrono::milliseconds patience(2);

}  // namespace

CurlLoader::CurlLoader() : threads_([this] { lead(); }, patience) {}

// Messages
// ------------------------------------------------------------------------------------------------------------

template <class Change>
void CurlLoader::tell(Change change) {
    CURLM* multi = nullptr;
    {
        const std::lock_guard lock(mutex_);
        change(inbox_);
        if (!std::exchange(inbox_.readerSleeps, false)) return;
        multi = multi_.get();
    }
    if (multi) {
        curl_multi_wakeup(multi);
    } else {
        told_.notify_one();
    }
}

Loader::Token CurlLoader::start(Exchange exchange, Finished finished) {
    const auto token = ++lastToken_;
    auto transfer =
        std::make_shared<CurlTransfer>(token, std::move(exchange), std::move(finished), admission_);
    ++underWay_;
    tell([&](Inbox& inbox) { inbox.starts.push_back(std::move(transfer)); });
    return token;
}

void CurlLoader::cancel(Token token) {
    tell([&](Inbox& inbox) { inbox.cancels.push_back(token); });
}

std::shared_ptr<SessionMemory> CurlLoader::makeSessionMemory() {
    return std::make_shared<CurlSessionMemory>();
}

void CurlLoader::stop() {
    threads_.stop([this] { tell([](Inbox& inbox) { inbox.stop = true; }); });
    keepHandlesOpen();
}

// The leader
// ----------------------------------------------------------------------------------------------------------

void CurlLoader::lead() {
    bool someBegin = true;  // who led before may have begun some
    while (handOut() && readInbox()) {
        someBegin |= admit();
        // libcurl (read and tried: 7.88.1) may forget those that it has received bytes for in a
        // round in which others begin: docs/decisions/0004-loading.md.
        const bool mayForget = someBegin && transfers_.size() > 1;
        perform();
        finishDone();
        expire();
        someBegin = admit();  // libcurl wakes up at once when it was given any
        if (!results_.empty()) {
            if (someBegin) perform();  // what they ask for is on its way while results are read
        } else if (!mayForget && fallAsleep()) {
            sleep();
        }
    }
}

void CurlLoader::perform() {
    int running = 0;
    curl_multi_perform(multi_.get(), &running);
}

// Takes results to where they are wanted, one after another, for as long as transfers may have to
// wait. False when another thread leads by now.
bool CurlLoader::handOut() {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!results_.empty() && std::chrono::steady_clock::now() < end) {
        auto [finished, result] = std::move(results_.front());
        results_.pop_front();
        const auto left = threads_.leave([&] { finished(std::move(result), Stay::Long); });
        if (left == Left::AndFollows) return false;
        if (left == Left::NotAtAll) finished(std::move(result), Stay::Brief);
    }
    return true;
}

// False when there are messages to be read first.
bool CurlLoader::fallAsleep() {
    const std::lock_guard lock(mutex_);
    inbox_.readerSleeps = inbox_.isEmpty();
    return inbox_.readerSleeps;
}

void CurlLoader::sleep() {
    if (multi_) {
        curl_multi_poll(multi_.get(), nullptr, 0, millisecondsToSleep(), nullptr);
    } else {
        std::unique_lock lock(mutex_);
        told_.wait(lock, [&] { return !inbox_.readerSleeps; });
    }
}

void CurlLoader::makeMulti() {
    auto multi = newMulti();
    const std::lock_guard lock(mutex_);
    multi_ = std::move(multi);
}

// False when the loader is to stop.
bool CurlLoader::readInbox() {
    Inbox inbox;
    {
        const std::lock_guard lock(mutex_);
        std::swap(inbox, inbox_);
    }
    if (inbox.stop) return false;
    if (!inbox.starts.empty()) {
        if (!multi_) makeMulti();
        applyConnectionLimits();
    }
    for (auto& transfer : inbox.starts) enter(std::move(transfer));
    for (const auto token : inbox.cancels) takeOut(token);
    return true;
}

void CurlLoader::applyConnectionLimits() {
    const auto settings = SharedNetworkSettings::instance().get();
    maximumConnections_ = settings->maximumConnectionsPerOrigin;
    // Admission keeps to it with the connections in use; for a new one libcurl then closes an idle
    // one.
    curl_multi_setopt(multi_.get(), CURLMOPT_MAX_HOST_CONNECTIONS,
                      static_cast<long>(maximumConnections_));
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS,
                      std::max(1L, static_cast<long>(settings->maximumIdleConnections)));
}

void CurlLoader::enter(Transfer transfer) {
    const auto token = transfer->token();
    auto& entered = *transfers_.emplace(token, std::move(transfer)).first->second;
    if (!entered.isReady()) return finish(token, entered.takeResult(entered.problem()));
    // As when there is no descriptor for a socket.
    if (!multi_) return finish(token, entered.takeResult(CURLE_COULDNT_CONNECT));
    deadlines_.set(token, entered.nextLook(std::chrono::steady_clock::now()));
    admission_.enter(token, entered.peer(), entered.kind());
}

// True when any transfer goes to libcurl.
bool CurlLoader::admit() {
    bool any = false;
    std::vector<Token> admitted;
    while (!(admitted = admission_.admit(maximumConnections_)).empty()) {
        any = true;
        for (const auto token : admitted) {
            auto& transfer = *transfers_.at(token);
            transfer.goOn();
            if (curl_multi_add_handle(multi_.get(), transfer.handle()) == CURLM_OK) continue;
            finish(token, transfer.takeResult(CURLE_OUT_OF_MEMORY));
        }
    }
    return any;
}

// Takes a transfer out of everything that knows it. Null when it is gone already.
CurlLoader::Transfer CurlLoader::takeOut(Token token) {
    const auto found = transfers_.find(token);
    if (found == transfers_.end()) return nullptr;
    auto transfer = std::move(found->second);
    transfers_.erase(found);
    --underWay_;
    deadlines_.remove(token);
    admission_.leave(token);
    if (transfer->handle()) curl_multi_remove_handle(multi_.get(), transfer->handle());
    return transfer;
}

// Transfers whose time has come are looked at: most have received bytes meanwhile and get a new
// time.
void CurlLoader::expire() {
    const auto now = std::chrono::steady_clock::now();
    while (const auto token = deadlines_.takeDue(now)) {
        const auto found = transfers_.find(*token);
        if (found == transfers_.end()) continue;
        auto& transfer = *found->second;
        transfer.look(now);
        if (transfer.deadline() > now) {
            deadlines_.set(*token, transfer.nextLook(now));
        } else {
            finish(*token, transfer.takeTimeout());
        }
    }
}

// The messages are drained first: removing a handle may invalidate those that were not read yet.
void CurlLoader::finishDone() {
    std::vector<std::pair<Token, CURLcode>> done;
    int left = 0;
    while (const auto* message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg == CURLMSG_DONE) {
            done.emplace_back(CurlTransfer::tokenOf(message->easy_handle), message->data.result);
        }
    }
    for (const auto& [token, code] : done) {
        if (const auto found = transfers_.find(token); found != transfers_.end()) {
            finish(token, found->second->takeResult(code));
        }
    }
}

void CurlLoader::finish(Token token, ExchangeResult result) {
    auto transfer = takeOut(token);
    if (!transfer) return;
    auto finished = transfer->takeFinished();
    result.remains = std::move(transfer);
    results_.push_back({std::move(finished), std::move(result)});
}

int CurlLoader::millisecondsToSleep() const {
    constexpr std::chrono::milliseconds longest = std::chrono::hours(1);
    const auto next = deadlines_.next();
    if (!next) return static_cast<int>(longest.count());
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*next - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp(left, std::chrono::milliseconds(0), longest).count());
}

// The process's loader
// ------------------------------------------------------------------------------------------------

namespace {

CurlLoader* processLoader = nullptr;
pid_t loaderProcess = 0;

// libcurl's and OpenSSL's own clean-up at exit comes after this, since they were set up before it
// was registered; no thread may be in the multi handle by then. A forked child has no such threads.
void stopAtExit() {
    if (getpid() == loaderProcess) processLoader->stop();
}

CurlLoader& startProcessLoader() {
    haveThreadInPool();  // it is needed on the loader's threads, where nobody could be told
    curl_global_init(CURL_GLOBAL_DEFAULT);
    processLoader = new CurlLoader;
    loaderProcess = getpid();
    std::atexit(stopAtExit);
    return *processLoader;
}

}  // namespace

Loader& sharedLoader() {
    static auto& loader = startProcessLoader();
    return loader;
}

}  // namespace rkt
