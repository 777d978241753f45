// The loader on libcurl's multi interface.

#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "support/curl/Admission.h"
#include "support/curl/CurlHandles.h"
#include "support/curl/CurlTransfer.h"
#include "support/curl/Deadlines.h"
#include "support/session/Loader.h"

namespace rkt {

/// One thread owns the multi handle and everything that hangs on it; other threads only put
/// messages, transfers that are ready to begin among them, into the inbox and wake it. What has
/// left the multi handle goes out with its result. The thread sleeps in curl_multi_poll until a
/// socket, a timer or a message needs it. Never destroyed: stop() ends the thread and leaves the
/// rest to the system.
class CurlLoader : public Loader {
public:
    CurlLoader();

    Token start(Exchange exchange, Finished finished) override;
    void cancel(Token token) override;
    std::shared_ptr<SessionMemory> makeSessionMemory() override;
    std::size_t exchangesUnderWay() const override { return underWay_; }

    /// Ends the thread, abandoning what is under way. For the exit of the process.
    void stop();

private:
    using Transfer = std::shared_ptr<CurlTransfer>;
    struct Inbox {
        std::vector<Transfer> starts;
        std::vector<Token> cancels;
        bool stop = false;
        bool awake = false;  // a wake-up is on its way, no need for another
    };

    template <class Change>
    void tell(Change change);
    void run();
    bool readInbox();
    void applyConnectionLimits();
    void enter(Transfer transfer);
    bool admit();
    void expire();
    void finishDone();
    Transfer takeOut(Token token);
    void finish(Token token, ExchangeResult result);
    int millisecondsToSleep() const;

    const std::unique_ptr<CURLM, CloseMulti> multi_;
    std::atomic<Token> lastToken_ = 0;
    std::atomic<std::size_t> underWay_ = 0;

    std::mutex mutex_;
    Inbox inbox_;

    // The thread's own.
    std::unordered_map<Token, Transfer> transfers_;
    Deadlines deadlines_;
    Admission admission_;
    std::size_t maximumConnections_ = 0;
    std::thread thread_;
};

}  // namespace rkt
