// A port that can be dead in several ways.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "tools/korvogit-emulator/Emulator.h"

/// A port of a loopback address. At first nobody listens there, so that connections are refused;
/// later it can lead to another port of this machine. Throws boost::system::system_error when the
/// system refuses.
class Gateway {
public:
    /// @param port  0: a free one
    explicit Gateway(const std::string& address = "127.0.0.1", std::uint16_t port = 0);
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    std::uint16_t port() const;

    /// Listens with a queue that is full: connections are neither accepted nor refused.
    void beSilent();
    /// Waits until a client has asked the silent port for a connection. False when none comes.
    bool waitForClient() const;
    /// How many connections clients have asked the silent port for.
    std::size_t waitingClients() const;
    /// Accepts connections and passes their bytes to that port of 127.0.0.1 and back.
    void leadTo(std::uint16_t port);
    /// The same for TLS connections, which end here: the bytes are passed on as plain ones.
    void leadTo(std::uint16_t port, const emulator::Identity& identity);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
