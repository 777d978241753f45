#include "tools/korvogit/LoopbackServer.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <string>

namespace {

using korvogit::Descriptor;
using korvogit::isLoopbackHost;
using korvogit::LoopbackServer;

/// 0, or the error of connecting to that address.
int errorOfConnecting(std::uint32_t host, std::uint16_t port) {
    const Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(host);
    return connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
                   0
               ? 0
               : errno;
}

TEST(KorvogitLoopbackServer, ListensOnOneAddressOnly) {
    const LoopbackServer server(0, [](const RKTURL&) { return true; });
    const auto origin = server.origin();
    const auto port = static_cast<std::uint16_t>(std::stoul(origin.substr(origin.rfind(':') + 1)));
    EXPECT_EQ(errorOfConnecting(0x7F000001, port), 0);             // 127.0.0.1
    EXPECT_EQ(errorOfConnecting(0x7F000002, port), ECONNREFUSED);  // 127.0.0.2
}

TEST(KorvogitLoopbackServer, IsNamedWithItsPort) {
    EXPECT_TRUE(isLoopbackHost("127.0.0.1:4321", 4321));
    for (const char* host : {"127.0.0.1", "127.0.0.1:80", "127.0.0.1:4321.example.com",
                             "localhost:4321", "127.0.0.2:4321", ""}) {
        EXPECT_FALSE(isLoopbackHost(host, 4321)) << host;
    }
}

TEST(KorvogitLoopbackServer, IsNamedWithoutThePortThatHTTPHasByItself) {
    EXPECT_TRUE(isLoopbackHost("127.0.0.1", 80));
    EXPECT_TRUE(isLoopbackHost("127.0.0.1:80", 80));
    EXPECT_FALSE(isLoopbackHost("localhost", 80));
}

}  // namespace
