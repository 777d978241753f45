#include "LoopbackServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace korvogit {

namespace {

constexpr std::size_t longestRequest = std::size_t{64} * 1024;
constexpr std::size_t mostConnections = 64;
constexpr std::chrono::seconds patienceForTheLastPage(2);

std::system_error failure(const char* what) {
    return {errno, std::generic_category(), what};
}

sockaddr_in loopbackAddress(std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

Descriptor listen(std::uint16_t port) {
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    // A connection of an earlier sign-in that is still closing does not take the port.
    setsockopt(socket.number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopbackAddress(port);
    if (bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.number(), SOMAXCONN) != 0) {
        throw failure("listen");
    }
    return socket;
}

std::uint16_t portOf(const Descriptor& socket) {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    getsockname(socket.number(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

std::string head(std::string_view status, std::string_view contentType, std::size_t length) {
    return "HTTP/1.1 " + std::string(status) + "\r\nContent-Type: " + std::string(contentType) +
           "; charset=utf-8\r\nContent-Length: " + std::to_string(length) +
           "\r\nConnection: close\r\nCache-Control: no-store\r\nReferrer-Policy: no-referrer\r\n"
           "X-Content-Type-Options: nosniff\r\nContent-Security-Policy: default-src 'none'; "
           "style-src 'unsafe-inline'; frame-ancestors 'none'\r\n\r\n";
}

// What is sent here fits the socket's buffer, so that it never has to wait.
void send(int socket, const std::string& bytes) {
    const auto sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    static_cast<void>(sent);  // a browser that went away misses nothing
    shutdown(socket, SHUT_WR);
}

/// The value of the first header field of that lower-case name, with the blanks around it.
std::string_view headerValue(std::string_view headers, std::string_view name) {
    const auto isName = [&](std::string_view text) {
        return std::ranges::equal(text, name, [](char left, char right) {
            return (left >= 'A' && left <= 'Z' ? left - 'A' + 'a' : left) == right;
        });
    };
    while (!headers.empty()) {
        const auto line = headers.substr(0, headers.find("\r\n"));
        headers.remove_prefix(std::min(line.size() + 2, headers.size()));
        const auto colon = line.find(':');
        if (colon != std::string_view::npos && isName(line.substr(0, colon))) {
            return line.substr(colon + 1);
        }
    }
    return {};
}

std::string_view withoutBlanks(std::string_view text) {
    while (text.starts_with(' ') || text.starts_with('\t')) text.remove_prefix(1);
    while (text.ends_with(' ') || text.ends_with('\t')) text.remove_suffix(1);
    return text;
}

}  // namespace

bool isLoopbackHost(std::string_view host, std::uint16_t port) {
    // A port that is the scheme's own is left out (RFC 9110 section 7.2).
    return host == "127.0.0.1:" + std::to_string(port) || (port == 80 && host == "127.0.0.1");
}

Descriptor::~Descriptor() {
    if (number_ >= 0) close(number_);
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
}

LoopbackServer::LoopbackServer(std::uint16_t port, Expects expects)
    : expects_(std::move(expects)), listener_(listen(port)), events_(epoll_create1(EPOLL_CLOEXEC)) {
    if (events_.number() < 0) throw failure("epoll");
    port_ = portOf(listener_);
    watch(listener_.number());
}

std::string LoopbackServer::origin() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

void LoopbackServer::watch(int descriptor) const {
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    if (epoll_ctl(events_.number(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
        throw failure("epoll");
    }
}

std::optional<RKTURL> LoopbackServer::handle() {
    std::array<epoll_event, 16> events = {};
    const int count =
        epoll_wait(events_.number(), events.data(), static_cast<int>(events.size()), 0);
    for (int i = 0; i < count; ++i) {
        const int descriptor = events.at(static_cast<std::size_t>(i)).data.fd;
        if (descriptor == listener_.number()) {
            acceptAll();
            continue;
        }
        const auto connection = connectionWith(descriptor);
        if (connection == connections_.end()) continue;
        if (auto address = read(connection)) return address;
    }
    return std::nullopt;
}

void LoopbackServer::acceptAll() {
    while (true) {
        Descriptor socket(
            accept4(listener_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (socket.number() < 0) return;
        // Whoever opens so many is no browser; the one that is waited for must still get through.
        if (connections_.size() >= mostConnections) connections_.erase(connections_.begin());
        watch(socket.number());
        connections_.push_back({std::move(socket)});
    }
}

std::vector<LoopbackServer::Connection>::iterator LoopbackServer::connectionWith(int descriptor) {
    return std::ranges::find(connections_, descriptor, [](const Connection& connection) {
        return connection.descriptor.number();
    });
}

std::optional<RKTURL> LoopbackServer::read(std::vector<Connection>::iterator connection) {
    const int socket = connection->descriptor.number();
    std::array<char, 4096> bytes = {};
    const ssize_t count = recv(socket, bytes.data(), bytes.size(), 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return std::nullopt;
    if (count <= 0) {
        connections_.erase(connection);
        return std::nullopt;
    }
    connection->received.append(bytes.data(), static_cast<std::size_t>(count));
    const bool complete = connection->received.find("\r\n\r\n") != std::string::npos;
    if (!complete && connection->received.size() < longestRequest) return std::nullopt;
    if (auto address = addressIn(*connection)) {
        cameBack_ = socket;
        return address;
    }
    constexpr std::string_view nothing = "There is nothing here.\n";
    send(socket, head("404 Not Found", "text/plain", nothing.size()) + std::string(nothing));
    connection->received.clear();  // what follows is read and dropped until the other side closes
    return std::nullopt;
}

std::optional<RKTURL> LoopbackServer::addressIn(const Connection& connection) const {
    std::string_view request = connection.received;
    const auto line = request.substr(0, request.find("\r\n"));
    request.remove_prefix(std::min(line.size() + 2, request.size()));
    const auto begin = line.find(' ') + 1;
    const auto end = line.find(' ', begin);
    if (line.substr(0, begin) != "GET " || end == std::string_view::npos) return std::nullopt;
    const auto target = line.substr(begin, end - begin);
    const auto host = withoutBlanks(headerValue(request, "host"));
    if (!isLoopbackHost(host, port_)) return std::nullopt;
    auto address = RKTURL::URLWithString(origin() + std::string(target));
    return address && expects_(*address) ? address : std::nullopt;
}

void LoopbackServer::answer(std::string_view html) {
    const auto connection = connectionWith(cameBack_);
    if (connection == connections_.end()) return;
    send(cameBack_, head("200 OK", "text/html", html.size()) + std::string(html));
    // Closing at once could take the page away from under a browser that still sends something.
    const auto deadline = std::chrono::steady_clock::now() + patienceForTheLastPage;
    std::array<char, 4096> bytes = {};
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd descriptor = {cameBack_, POLLIN, 0};
        if (left.count() <= 0 || poll(&descriptor, 1, static_cast<int>(left.count())) <= 0) break;
        if (recv(cameBack_, bytes.data(), bytes.size(), 0) <= 0) break;
    }
    connections_.erase(connection);
}

}  // namespace korvogit
