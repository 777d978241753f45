#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "CertificateAuthority.h"
#include "Message.h"
#include "RawAnswer.h"

namespace emulator {

/// Where in its opening a connection can be disturbed.
enum class ConnectionStage {
    Accepted,     ///< as soon as it is accepted, before anything is read
    ClientHello,  ///< when the first bytes of the TLS handshake have arrived; HTTPS listener only
};

/// What the network needs from above. Called from the network's threads, several at once.
class Exchange {
public:
    virtual ~Exchange() = default;
    virtual RawAnswer answer(Request& request) = 0;
    /// Steps that take the place of the connection's further life; they act below TLS.
    virtual std::optional<RawAnswer> disturbance(ConnectionStage stage, bool tls) = 0;
};

/// The listeners, the connections and their threads. The destructor closes everything, in whatever
/// state it is, and joins the threads.
class Network {
public:
    /// Listens on 127.0.0.1; port 0 takes a free one. Throws std::system_error when it cannot.
    Network(Exchange& exchange, std::uint16_t httpPort, std::uint16_t httpsPort,
            const Identity& identity, std::size_t threads);
    ~Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    std::uint16_t httpPort() const;
    std::uint16_t httpsPort() const;
    /// The certificate of handshakes from now on.
    void present(const Identity& identity);
    std::uint64_t acceptedConnections() const;
    std::size_t openConnections() const;
    /// Waits until no more than so many are open; false when the time is over first.
    bool waitForOpenConnections(std::size_t atMost, std::chrono::milliseconds timeout) const;
    void closeIdleConnections();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace emulator
