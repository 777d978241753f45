#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Message.h"

namespace emulator {

/// A forward proxy on 127.0.0.1 for tests of clients that go through one: CONNECT tunnels, and
/// plain requests in absolute form. It never leaves this machine: targets are those given to
/// `route`, and loopback addresses by name or number; all others get 502. Safe from any thread.
class ForwardProxy {
public:
    enum class Behaviour {
        Forward,
        Forbid,        ///< 403
        Authenticate,  ///< 407, unless Proxy-Authorization is Basic with `user()` and `password()`
        Reset,         ///< RST instead of an answer
        Silent,        ///< no answer at all
    };

    /// Listens when it returns, on a free port.
    explicit ForwardProxy(Behaviour behaviour = Behaviour::Forward);
    ~ForwardProxy();
    ForwardProxy(const ForwardProxy&) = delete;
    ForwardProxy& operator=(const ForwardProxy&) = delete;

    std::uint16_t port() const;
    /// "http://127.0.0.1:PORT".
    std::string url() const;
    /// Leads "api.github.com:443", say, to a port of this machine.
    void route(std::string hostAndPort, std::uint16_t localPort);
    void setBehaviour(Behaviour behaviour);

    static std::string user() { return "proxy-user"; }
    static std::string password() { return "proxy-password"; }

    /// What it was asked for: method, target, authority (the target's host and port), headers.
    std::vector<Request> requests() const;
    /// Waits until at least so many have come; false when the time is over first.
    bool waitForRequests(std::size_t count,
                         std::chrono::milliseconds timeout = std::chrono::seconds(20)) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace emulator
