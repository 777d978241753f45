// What the session layer needs of an HTTP library: one exchange at a time, by token.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "KorvoGitService/RKTNetworkSettings.h"
#include "KorvoGitService/RKTURLRequest.h"
#include "support/RequestTarget.h"
#include "support/session/HeaderBlock.h"

namespace rkt {

/// What a session keeps from one exchange to the next: cookies, and the TLS sessions that servers
/// let it resume. Only the loader that made it can look inside; it may be let go on any thread.
class SessionMemory {
public:
    SessionMemory(const SessionMemory&) = delete;
    SessionMemory& operator=(const SessionMemory&) = delete;
    virtual ~SessionMemory() = default;

protected:
    SessionMemory() = default;
};

/// One exchange: a request to one origin, with no redirects followed. Owns all that it needs.
struct Exchange {
    RequestTarget target;
    std::string method;
    std::vector<RKTURLRequest::Header> headers;  // known to hold no control characters but tabs
    std::string body;
    std::shared_ptr<const RKTNetworkSettings> settings;
    std::chrono::milliseconds idleTimeout;           // without a byte
    std::chrono::steady_clock::time_point deadline;  // of the whole task
    std::shared_ptr<SessionMemory> memory;
};

/// How an exchange ended: with a failure, or with an answer. A status is data here, whatever it
/// says.
struct ExchangeResult {
    struct Failure {
        std::int64_t code;  // of NSURLErrorDomain
        std::int64_t underlyingCode;
        std::string underlyingText;
    };
    std::optional<Failure> failure;
    int status = 0;  // 0: no headers arrived
    HeaderBlock headers;
    std::string body;  // as on the wire, still compressed
    /// What the loader made for the exchange: letting go of it takes time.
    std::shared_ptr<void> remains;
};

/// Moves bytes, on threads of its own. Everything here may be called from any thread and never
/// blocks; start() prepares the exchange on its caller's thread.
class Loader {
public:
    using Token = std::uint64_t;
    /// How long a thread of the loader may be kept.
    enum class Stay {
        Brief,  ///< it is needed: the result is handed on
        Long,   ///< as long as it takes, even for ever
    };
    /// Called on a thread of the loader, at most once.
    using Finished = std::function<void(ExchangeResult result, Stay stay)>;

    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;
    virtual ~Loader() = default;

    virtual Token start(Exchange exchange, Finished finished) = 0;
    /// Stops an exchange; it then finishes without a word. Without effect when it has finished
    /// already.
    virtual void cancel(Token token) = 0;
    virtual std::shared_ptr<SessionMemory> makeSessionMemory() = 0;
    /// How many were started and have neither finished nor been stopped yet, so that the books can
    /// be balanced.
    virtual std::size_t exchangesUnderWay() const = 0;

protected:
    Loader() = default;
};

/// The loader of the process; started by its first use, stopped when the process exits.
Loader& sharedLoader();

}  // namespace rkt
