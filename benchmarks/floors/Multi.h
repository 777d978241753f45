// Bare curl_multi: as many GETs of one origin as asked for, some of them in flight at a time.
//
// All connections that these can need are opened first, each by a transfer of its own. Afterwards a
// transfer that begins always finds a stream that is free, and none comes into libcurl's own queue,
// which can forget those in it (docs/decisions/0004-loading.md).

#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace floors {

class Multi {
public:
    /// What becomes of a body; by default it is kept, as on the wire, and handed to `finished`.
    enum class Bodies { Kept, DecodedAndDiscarded };
    using Finished = std::function<void(const std::string& body)>;

    /// @param origin  "address:port", where all hosts are found
    Multi(const std::string& origin, const std::string& authorities, std::size_t inFlight,
          Bodies bodies, Finished finished);
    ~Multi();
    Multi(const Multi&) = delete;
    Multi& operator=(const Multi&) = delete;

    /// Ends the program when a transfer fails, or when none ends for a minute.
    void get(std::size_t count, const std::function<std::string(std::size_t index)>& url);

private:
    struct Slot {
        CURL* easy;
        std::string body;
    };

    static int onConnection(void* multi, char*, char*, int, int);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* slot);
    static std::size_t discard(char*, std::size_t size, std::size_t count, void*);
    void begin(Slot& slot, const std::string& url);
    void turn();
    void noteDone();
    Slot& takeDone();

    CURLM* multi_;
    curl_slist* connectTo_;
    std::vector<Slot> slots_;
    Finished finished_;

    const std::size_t connections_;  // as many as all transfers together can need
    std::size_t toOpen_ = connections_;
    std::size_t opened_ = 0;
    std::size_t underWay_ = 0;
    std::deque<Slot*> done_;
    int running_ = 0;            // for libcurl
    int roundsBeforeSleep_ = 0;  // at least
    std::chrono::steady_clock::time_point lastDone_;
};

}  // namespace floors
