// The loader on libcurl's multi interface.

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "support/LeaderAndFollower.h"
#include "support/curl/Admission.h"
#include "support/curl/CurlHandles.h"
#include "support/curl/CurlTransfer.h"
#include "support/curl/Deadlines.h"
#include "support/session/Loader.h"

namespace rkt {

/// One thread at a time, the leader, owns the multi handle and everything that hangs on it; other
/// threads only put messages, transfers that are ready to begin among them, into the inbox and wake
/// it. What has left the multi handle goes out with its result. The leader sleeps in
/// curl_multi_poll until a socket, a timer or a message needs it, and takes results to where they
/// are wanted (docs/decisions/0007-results-where-they-arrive.md). While the process is out of file
/// descriptors there may be no multi handle: exchanges fail then, and each new one tries again.
/// Never destroyed: after stop() its threads sleep, and the rest is left to the system.
class CurlLoader : public Loader {
public:
    CurlLoader();

    Token start(Exchange exchange, Finished finished) override;
    void cancel(Token token) override;
    std::shared_ptr<SessionMemory> makeSessionMemory() override;
    std::size_t exchangesUnderWay() const override { return underWay_; }

    /// No thread is in the multi handle afterwards; what is under way is abandoned. For the exit of
    /// the process, which may come from inside a handler.
    void stop();

private:
    using Transfer = std::shared_ptr<CurlTransfer>;
    using Left = LeaderAndFollower::Left;
    struct Inbox {
        std::vector<Transfer> starts;
        std::vector<Token> cancels;
        bool stop = false;
        bool readerSleeps = false;  // or is about to: it needs a wake-up

        bool isEmpty() const { return starts.empty() && cancels.empty() && !stop; }
    };
    struct Result {
        Finished finished;
        ExchangeResult result;
    };

    template <class Change>
    void tell(Change change);
    void lead();
    void perform();
    bool readInbox();
    bool fallAsleep();
    void sleep();
    void makeMulti();
    void applyConnectionLimits();
    void enter(Transfer transfer);
    bool admit();
    void expire();
    void finishDone();
    Transfer takeOut(Token token);
    void finish(Token token, ExchangeResult result);
    bool handOut();
    int millisecondsToSleep() const;

    std::atomic<Token> lastToken_ = 0;
    std::atomic<std::size_t> underWay_ = 0;

    std::mutex mutex_;
    Inbox inbox_;
    std::condition_variable told_;  // for a leader that sleeps without a multi handle

    // The leader's own, but that others wake it up by the handle; set with the lock held, once.
    MultiHandle multi_;

    // The leader's own.
    std::unordered_map<Token, Transfer> transfers_;
    Deadlines deadlines_;
    Admission admission_;
    std::size_t maximumConnections_ = 0;
    std::deque<Result> results_;  // to be handed out
    LeaderAndFollower threads_;
};

}  // namespace rkt
