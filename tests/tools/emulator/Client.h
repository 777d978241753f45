#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace emulator_test {

/// How a connection ended, seen from the client.
enum class End {
    Orderly,  ///< FIN, and over TLS a close_notify before it
    CutOff,   ///< FIN over TLS without close_notify
    Reset,
    TimedOut,
};

struct Received {
    std::string bytes;
    End end = End::Orderly;
};

struct Response {
    unsigned status = 0;
    std::string head;
    std::string body;

    /// The value of the header line that begins with exactly this name.
    std::optional<std::string> header(const std::string& name) const {
        const auto at = head.find("\r\n" + name + ": ");
        if (at == std::string::npos) {
            return std::nullopt;
        }
        const auto begin = at + name.size() + 4;
        return head.substr(begin, head.find("\r\n", begin) - begin);
    }
};

/// How to speak TLS: whom to trust, which host to ask for, which protocols to offer.
struct Tls {
    std::filesystem::path caFile;
    std::string serverName = "localhost";
    std::string alpn{};
};

/// A blocking client with nothing of the emulator in it: sockets and OpenSSL, the bytes as they
/// come. No wait is longer than 20 seconds.
class Client {
public:
    explicit Client(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        const timeval patience{20, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            ::close(socket_);
            throw std::runtime_error("not connected");
        }
    }

    Client(std::uint16_t port, const Tls& tls) : Client(port) { startTls(tls); }

    ~Client() { close(); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Whether the handshake succeeded.
    bool startTls(const Tls& tls) {
        context_.reset(SSL_CTX_new(TLS_client_method()));
        SSL_CTX_load_verify_file(context_.get(), tls.caFile.c_str());
        SSL_CTX_set_verify(context_.get(), SSL_VERIFY_PEER, nullptr);
        ssl_.reset(SSL_new(context_.get()));
        SSL_set_tlsext_host_name(ssl_.get(), tls.serverName.c_str());
        SSL_set1_host(ssl_.get(), tls.serverName.c_str());
        if (!tls.alpn.empty()) {
            SSL_set_alpn_protos(ssl_.get(), reinterpret_cast<const unsigned char*>(tls.alpn.data()),
                                static_cast<unsigned>(tls.alpn.size()));
        }
        SSL_set_fd(ssl_.get(), socket_);
        ERR_clear_error();
        errno = 0;
        secure_ = SSL_connect(ssl_.get()) == 1;
        handshakeErrno_ = errno;
        return secure_;
    }

    bool isSecure() const { return secure_; }
    int handshakeErrno() const { return handshakeErrno_; }
    /// X509_V_OK or why the certificate was not trusted.
    long verifyResult() const { return SSL_get_verify_result(ssl_.get()); }
    std::string chosenProtocol() const {
        const unsigned char* data = nullptr;
        unsigned length = 0;
        SSL_get0_alpn_selected(ssl_.get(), &data, &length);
        return {reinterpret_cast<const char*>(data), length};
    }

    void send(const std::string& bytes) {
        const auto length = static_cast<int>(bytes.size());
        const auto sent = ssl_ ? SSL_write(ssl_.get(), bytes.data(), length)
                               : ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent != length) {
            throw std::runtime_error("not sent");
        }
    }

    /// Everything up to the end of the connection, or up to so many bytes.
    Received receiveAll(std::size_t atMost = SIZE_MAX) {
        Received received{std::exchange(unread_, {}), End::Orderly};
        while (received.bytes.size() < atMost) {
            const auto [piece, end] = receiveSome();
            if (end) {
                received.end = *end;
                break;
            }
            received.bytes += piece;
        }
        return received;
    }

    /// Reads one answer whose length is told by Content-Length. What follows it is kept.
    Response receive(bool withBody = true) {
        readUntil([&] { return unread_.find("\r\n\r\n") != std::string::npos; });
        Response response;
        const auto headEnd = unread_.find("\r\n\r\n") + 4;
        response.head = unread_.substr(0, headEnd);
        response.status = static_cast<unsigned>(std::stoul(response.head.substr(9, 3)));
        const auto length =
            withBody ? std::stoul(response.header("Content-Length").value_or("0")) : 0;
        readUntil([&] { return unread_.size() >= headEnd + length; });
        response.body = unread_.substr(headEnd, length);
        unread_.erase(0, headEnd + length);
        return response;
    }

    /// Reads exactly so many bytes.
    std::string receiveExactly(std::size_t count) {
        readUntil([&] { return unread_.size() >= count; });
        auto bytes = unread_.substr(0, count);
        unread_.erase(0, count);
        return bytes;
    }

    void close() {
        if (socket_ >= 0) {
            ::close(std::exchange(socket_, -1));
        }
    }

private:
    template <auto Free>
    struct Freeing {
        template <typename T>
        void operator()(T* object) const {
            Free(object);
        }
    };

    template <typename Enough>
    void readUntil(Enough enough) {
        while (!enough()) {
            const auto [piece, end] = receiveSome();
            if (end) {
                throw std::runtime_error("ended early, after: " + unread_);
            }
            unread_ += piece;
        }
    }

    std::pair<std::string, std::optional<End>> receiveSome() {
        std::string piece(65536, '\0');
        ERR_clear_error();
        const auto count = ssl_ ? SSL_read(ssl_.get(), piece.data(), static_cast<int>(piece.size()))
                                : ::recv(socket_, piece.data(), piece.size(), 0);
        if (count > 0) {
            piece.resize(static_cast<std::size_t>(count));
            return {piece, std::nullopt};
        }
        return {"", ssl_ ? endOfTls(static_cast<int>(count)) : endOfPlain(count)};
    }

    static End endOfPlain(long count) {
        if (count == 0) {
            return End::Orderly;
        }
        return errno == ECONNRESET ? End::Reset : End::TimedOut;
    }

    End endOfTls(int count) {
        const int systemError = errno;
        switch (SSL_get_error(ssl_.get(), count)) {
            case SSL_ERROR_ZERO_RETURN:
                return End::Orderly;
            case SSL_ERROR_SYSCALL:
                return systemError == ECONNRESET ? End::Reset : End::CutOff;
            case SSL_ERROR_SSL:
                return End::CutOff;
            default:
                return End::TimedOut;
        }
    }

    int socket_ = -1;
    std::unique_ptr<SSL_CTX, Freeing<SSL_CTX_free>> context_;
    std::unique_ptr<SSL, Freeing<SSL_free>> ssl_;
    bool secure_ = false;
    int handshakeErrno_ = 0;
    std::string unread_;
};

/// A GET request. `headers`: lines, each with its line end.
inline std::string get(const std::string& target, const std::string& headers = {},
                       const std::string& host = "localhost") {
    return "GET " + target + " HTTP/1.1\r\nHost: " + host + "\r\n" + headers + "\r\n";
}

}  // namespace emulator_test
