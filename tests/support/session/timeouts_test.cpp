// How long a task may take, and what restarts the time.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>

#include "tests/helpers/Loading.h"

namespace {

using emulator::RawAnswer;

class Timeouts : public testing::Test {
protected:
    Origin origin;

    Loaded load() { return origin.load(origin.url("/x")); }
};

// Takes a request's body in pieces, with pauses between them, and answers then.
class SlowReader {
public:
    static constexpr std::size_t piece = std::size_t{1} << 20;

    SlowReader(std::size_t pieces, std::chrono::milliseconds pause) {
        constexpr int small = 65536;  // so that what is not read stays with the sender
        setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const general = reinterpret_cast<sockaddr*>(&address);
        if (bind(socket_, general, size) != 0 || listen(socket_, 1) != 0 ||
            getsockname(socket_, general, &size) != 0) {
            throw std::system_error(errno, std::generic_category());
        }
        port_ = ntohs(address.sin_port);
        reader_ = std::jthread([=, this] { read(pieces, pause); });
    }
    ~SlowReader() {
        shutdown(socket_, SHUT_RDWR);
        reader_.join();
        close(socket_);
    }
    SlowReader(const SlowReader&) = delete;
    SlowReader& operator=(const SlowReader&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

private:
    void read(std::size_t pieces, std::chrono::milliseconds pause) const {
        const int client = accept(socket_, nullptr, nullptr);
        std::string bytes(piece, '\0');
        for (std::size_t i = 0; i < pieces; ++i) {
            std::this_thread::sleep_for(pause);
            if (recv(client, bytes.data(), piece, MSG_WAITALL) <= 0) break;
        }
        const std::string answer =
            "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
        send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
        shutdown(client, SHUT_WR);
        while (recv(client, bytes.data(), piece, 0) > 0) continue;
        close(client);
    }

    const int socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::uint16_t port_ = 0;
    std::jthread reader_;
};

TEST_F(Timeouts, EveryByteRestartsTheIdleTimeout) {
    origin.settings.timeoutIntervalForRequest = std::chrono::milliseconds(600);
    RawAnswer slow;
    slow.send("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n");
    for (int i = 0; i < 8; ++i)
        slow.pause(std::chrono::milliseconds(200)).send("b");  // 1.6 s in all
    origin.server.script({.path = "/x"}, slow);
    EXPECT_EQ(load().data, "bbbbbbbb");
}

TEST_F(Timeouts, TheWholeTaskHasATimeLimitToo) {
    origin.settings.timeoutIntervalForResource = std::chrono::milliseconds(500);
    RawAnswer endless;
    endless.send("HTTP/1.1 200 OK\r\n\r\n");
    for (int i = 0; i < 100; ++i) endless.pause(std::chrono::milliseconds(50)).send("b");
    origin.server.script({.path = "/x"}, endless);
    const Loaded loaded = load();
    EXPECT_EQ(loaded.code(), RKTError::NSURLErrorTimedOut);
    EXPECT_EQ(loaded.status(), 200);
}

TEST_F(Timeouts, WhatIsSentRestartsTheIdleTimeoutToo) {
    constexpr std::size_t pieces = 24;
    SlowReader reader(pieces, std::chrono::milliseconds(100));  // 2.4 s in all
    origin.settings.timeoutIntervalForRequest = std::chrono::milliseconds(1200);
    auto request = requestTo(reader.url());
    request.setHTTPMethod("POST");
    request.setHTTPBody(std::string(pieces * SlowReader::piece, 'b'));
    EXPECT_EQ(origin.load(request).status(), 200);
}

TEST_F(Timeouts, AnUploadThatNobodyReadsTimesOut) {
    SlowReader reader(1, std::chrono::seconds(2));
    origin.settings.timeoutIntervalForRequest = std::chrono::milliseconds(300);
    auto request = requestTo(reader.url());
    request.setHTTPMethod("POST");
    request.setHTTPBody(std::string(24 * SlowReader::piece, 'b'));
    EXPECT_EQ(origin.load(request).code(), RKTError::NSURLErrorTimedOut);
}

TEST_F(Timeouts, NoTimeoutOverflows) {
    origin.server.script({.path = "/x"}, emulator::Answer{});
    origin.settings.timeoutIntervalForRequest = std::chrono::milliseconds::max();
    origin.settings.timeoutIntervalForResource = std::chrono::milliseconds::max();
    EXPECT_EQ(load().status(), 200);
    for (const auto none : {std::chrono::milliseconds(0), std::chrono::milliseconds::min()}) {
        origin.settings.timeoutIntervalForResource = none;
        auto hold = origin.server.hold({.path = "/x"});
        EXPECT_EQ(load().code(), RKTError::NSURLErrorTimedOut);
    }
}

}  // namespace
