#pragma once

#include <chrono>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "Gate.h"

namespace emulator {

/// What happens on a connection instead of, or as, an answer: bytes and events in order, below
/// HTTP. Nothing is added, so the bytes may be wrong in every way that a test needs.
///
///     server.script({.path = "/user"}, RawAnswer().send("HTTP/1.1 200 OK\r\n").reset());
///
/// On a TLS connection `send` is encrypted; `reset` and the two closings act on the socket below.
/// While a step waits (`pause`, `await`, `silence`) the connection ends as soon as the peer leaves.
/// A script that ends without a closing step closes the connection in good order, unless
/// `keepAlive` was called: then the next request is read from it.
class RawAnswer {
public:
    struct Send {
        std::string bytes;
        std::size_t times = 1;
    };
    struct Pause {
        std::chrono::milliseconds duration;
    };
    struct Await {
        std::shared_ptr<Gate> gate;
    };
    struct Silence {};
    struct Reset {};
    struct Close {};
    struct CutOff {};
    using Step = std::variant<Send, Pause, Await, Silence, Reset, Close, CutOff>;

    static constexpr std::size_t endless = std::numeric_limits<std::size_t>::max();

    /// Sends bytes as they stand, `times` times over; `endless`: until the peer gives up.
    RawAnswer& send(std::string bytes, std::size_t times = 1);
    /// Waits a bounded time, then goes on.
    RawAnswer& pause(std::chrono::milliseconds duration);
    /// Waits until the gate is opened, then goes on.
    RawAnswer& await(std::shared_ptr<Gate> gate);
    /// Says nothing more until the peer leaves or the server stops.
    RawAnswer& silence();
    /// Sends RST, after all that was sent before has reached the peer's kernel.
    RawAnswer& reset();
    /// Ends in good order: TLS close_notify, then FIN.
    RawAnswer& close();
    /// FIN without TLS close_notify, as after a crash of the server.
    RawAnswer& cutOff();
    /// Keeps the connection for another request when the steps are done.
    RawAnswer& keepAlive(bool keep = true);
    /// Adds a step that was made elsewhere.
    RawAnswer& then(Step step);

    const std::vector<Step>& steps() const { return steps_; }
    bool keepsAlive() const { return keepAlive_; }
    /// The same steps, but after these ones.
    RawAnswer& prepend(const RawAnswer& first);

private:
    std::vector<Step> steps_;
    bool keepAlive_ = false;
};

}  // namespace emulator
