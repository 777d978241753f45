// A server that answers everybody with the same bytes.

#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace fuzz {

/// Listens on 127.0.0.1 as long as the process lives. Whoever connects gets the answer after the
/// end of the request's headers, and then the end of the connection.
class Loopback {
public:
    static Loopback& instance();

    std::uint16_t port() const { return port_; }
    void setAnswer(std::string_view answer);

private:
    Loopback();
    void serve() const;
    void serveConnection(int connection) const;
    std::string answer() const;

    int listener_ = -1;
    std::uint16_t port_ = 0;
    mutable std::mutex mutex_;
    std::string answer_;
};

}  // namespace fuzz
