#include "fuzz/common/Loopback.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "fuzz/common/Target.h"

namespace fuzz {

Loopback& Loopback::instance() {
    static auto& server = *new Loopback;
    return server;
}

Loopback::Loopback() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    require(bind(listener_, general, size) == 0 && listen(listener_, 64) == 0 &&
                getsockname(listener_, general, &size) == 0,
            "loopback can be listened on");
    port_ = ntohs(address.sin_port);
    std::thread([this] { serve(); }).detach();
}

void Loopback::setAnswer(std::string_view answer) {
    const std::lock_guard lock(mutex_);
    answer_ = answer;
}

std::string Loopback::answer() const {
    const std::lock_guard lock(mutex_);
    return answer_;
}

void Loopback::serve() const {
    for (;;) {
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) continue;
        // A client that neither reads nor leaves holds up the others for so long only.
        const timeval patience = {5, 0};
        setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        serveConnection(connection);
        close(connection);
    }
}

void Loopback::serveConnection(int connection) const {
    std::string request;
    std::array<char, 4096> bytes;
    while (request.find("\r\n\r\n") == std::string::npos) {
        const auto count = recv(connection, bytes.data(), bytes.size(), 0);
        if (count <= 0) return;
        request.append(bytes.data(), static_cast<std::size_t>(count));
    }
    const auto text = answer();
    std::string_view rest = text;
    while (!rest.empty()) {
        const auto count = send(connection, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (count <= 0) return;
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    shutdown(connection, SHUT_WR);
}

}  // namespace fuzz
