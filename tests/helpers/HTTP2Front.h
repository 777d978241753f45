// HTTP/2 in front of the emulator, which speaks HTTP/1.1 alone.

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/helpers/TemporaryFolder.h"
#include "tools/korvogit-emulator/Emulator.h"

/// An nghttpx process on loopback that terminates TLS with a certificate of the authority and hands
/// the requests to an HTTP port, each with a "Forwarded" header that is the same for all requests
/// of one client connection and for no others. It ends with this object. Throws std::runtime_error
/// when it does not start.
class HTTP2Front {
public:
    HTTP2Front(const emulator::CertificateAuthority& authority, std::uint16_t httpPort);
    ~HTTP2Front();
    HTTP2Front(const HTTP2Front&) = delete;
    HTTP2Front& operator=(const HTTP2Front&) = delete;

    std::uint16_t port() const { return port_; }
    /// Whether the connection of each answered request, in the order of the answers, spoke HTTP/2
    /// and had resumed a TLS session. Waits for so many.
    std::vector<bool> resumptions(std::size_t requests) const;
    /// Ends the process and with it all connections, as when a server's machine goes down.
    void end();

private:
    void writeIdentity(const emulator::Identity& identity) const;
    void spawn(std::uint16_t httpPort);
    void waitUntilListening();

    const rkt::tests::TemporaryFolder directory_;
    const std::uint16_t port_;
    pid_t process_ = -1;
    int log_ = -1;
};
