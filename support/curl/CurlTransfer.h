// One exchange in libcurl's hands.

#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "support/curl/Admission.h"
#include "support/curl/AnswerReader.h"
#include "support/curl/CurlHandles.h"
#include "support/curl/CurlSessionMemory.h"
#include "support/session/Loader.h"

namespace rkt {

/// Owns everything that libcurl points to while it works, so it does not move. Its callbacks copy
/// bytes and set flags, nothing else. Made on one thread, used by the loader's, destroyed on
/// whichever thread takes the result.
class CurlTransfer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// @param admission  hears when this has begun; outlives it
    CurlTransfer(Loader::Token token, Exchange exchange, Loader::Finished finished,
                 Admission& admission);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    Loader::Token token() const { return token_; }
    CURL* handle() const { return handle_.get(); }
    /// False when libcurl refuses a setting, for want of memory or of a file.
    bool isReady() const { return problem_ == CURLE_OK; }
    CURLcode problem() const { return problem_; }

    /// What transfers have in common that one connection can serve.
    const std::string& peer() const { return peer_; }
    Admission::Kind kind() const;
    /// Its turn has come: it goes into the multi handle.
    void goOn() { handedOver_ = std::chrono::steady_clock::now(); }

    /// Sees whether more of the request's body has gone.
    void look(TimePoint now);
    /// When the transfer is too late, as it was looked at.
    TimePoint deadline() const;
    /// When to look at it again at the latest: while it connects, since libcurl keeps no timer for
    /// its going on from an address that is silent to the host's next one but does so when it is
    /// looked at; and while it sends a body.
    TimePoint nextLook(TimePoint now) const;

    ExchangeResult takeResult(CURLcode code);
    ExchangeResult takeTimeout();
    Loader::Finished takeFinished() { return std::move(finished_); }

    static Loader::Token tokenOf(CURL* handle);

private:
    void configure();
    void configureRequest();
    void configureNetwork();
    void configureReceiving();
    template <class T>
    void set(CURLoption option, T value);
    void append(HeaderList& list, const std::string& line);

    static int onConnection(void* transfer, char* address, char* ownAddress, int port, int ownPort);
    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* transfer);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* transfer);
    void touch() { lastByte_ = std::chrono::steady_clock::now(); }
    std::optional<ExchangeResult::Failure> failure(CURLcode code) const;
    std::string underlyingText(CURLcode code) const;

    const Loader::Token token_;
    const Exchange exchange_;
    const std::shared_ptr<CurlSessionMemory> memory_;
    const std::optional<std::string> authorityFile_;
    const std::string peer_;
    Loader::Finished finished_;
    const EasyHandle handle_;
    Admission& admission_;
    HeaderList headerList_;
    HeaderList connectTo_;
    CURLcode problem_ = CURLE_OK;
    char errorText_[CURL_ERROR_SIZE] = "";

    const TimePoint started_ = std::chrono::steady_clock::now();
    TimePoint handedOver_ = started_;
    TimePoint lastByte_ = started_;  // that came, or was seen to have gone
    curl_off_t sentOfBody_ = 0;      // when it was looked at
    AnswerReader answer_;
};

}  // namespace rkt
