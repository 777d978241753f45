#pragma once

#include <KorvoGitService/RKTURL.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvogit {

/// A descriptor that is closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept;

    int number() const { return number_; }

private:
    int number_;
};

/// Whether the Host field of a request names the server on 127.0.0.1 with that port.
bool isLoopbackHost(std::string_view host, std::uint16_t port);

/// Waits on 127.0.0.1 for the browser that the service sends back (RFC 8252 section 7.3). Several
/// connections may be open at once, and silent ones hold nobody up: browsers open some in advance.
/// Everything but a GET of an address that is expected, with this server as its host, is answered
/// with "not found" and forgotten: a page elsewhere that had its name lead here is not listened to.
class LoopbackServer {
public:
    using Expects = std::function<bool(const RKTURL& address)>;

    /// @param port 0 for a free one
    /// @throws std::system_error when the port is taken
    LoopbackServer(std::uint16_t port, Expects expects);

    /// "http://127.0.0.1:PORT"
    std::string origin() const;
    /// Readable when handle() has something to do.
    int fileDescriptor() const { return events_.number(); }

    /// Takes what has arrived, without waiting. Once the browser has come back: the whole address
    /// that it asked for.
    std::optional<RKTURL> handle();

    /// Shows the browser that came back a page, and waits a moment until it has it.
    void answer(std::string_view html);

private:
    struct Connection {
        Descriptor descriptor;
        std::string received{};
    };

    void watch(int descriptor) const;
    std::vector<Connection>::iterator connectionWith(int descriptor);
    void acceptAll();
    /// The address, when the request is complete and the one that is waited for. A connection that
    /// has ended goes.
    std::optional<RKTURL> read(std::vector<Connection>::iterator connection);
    std::optional<RKTURL> addressIn(const Connection& connection) const;

    Expects expects_;
    Descriptor listener_;
    Descriptor events_;
    std::uint16_t port_ = 0;
    std::vector<Connection> connections_;  // in the order of their arrival
    int cameBack_ = -1;                    // the connection to answer
};

}  // namespace korvogit
