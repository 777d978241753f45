#include "tests/helpers/Gateway.h"

#include <netinet/tcp.h>

#include <array>
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace {

namespace asio = boost::asio;
using Tcp = asio::ip::tcp;
using ErrorCode = boost::system::error_code;
using TlsStream = asio::ssl::stream<Tcp::socket>;

void endSending(Tcp::socket& socket) {
    ErrorCode ignored;
    socket.shutdown(Tcp::socket::shutdown_send, ignored);
}

void endSending(TlsStream& stream) {
    endSending(stream.next_layer());
}

/// A client's connection and the one that is made for it.
template <class Client>
class Passage : public std::enable_shared_from_this<Passage<Client>> {
public:
    template <class... Arguments>
    explicit Passage(asio::io_context& context, Arguments&&... arguments)
        : client_(std::forward<Arguments>(arguments)...), server_(context) {}

    Client& client() { return client_; }

    void open(std::uint16_t port) {
        server_.async_connect({asio::ip::address_v4::loopback(), port},
                              [self = this->shared_from_this()](ErrorCode error) {
                                  if (error) return;
                                  self->pass(self->client_, self->server_, self->up_);
                                  self->pass(self->server_, self->client_, self->down_);
                              });
    }

private:
    using Buffer = std::array<char, 16384>;

    template <class From, class To>
    void pass(From& from, To& to, Buffer& buffer) {
        from.async_read_some(asio::buffer(buffer), [this, self = this->shared_from_this(), &from,
                                                    &to, &buffer](ErrorCode end, std::size_t size) {
            if (end) return endSending(to);
            asio::async_write(to, asio::buffer(buffer.data(), size),
                              [this, self, &from, &to, &buffer](ErrorCode error, std::size_t) {
                                  if (!error) pass(from, to, buffer);
                              });
        });
    }

    Client client_;
    Tcp::socket server_;
    Buffer up_{};
    Buffer down_{};
};

// One line for each connection: "0: 0100007F:1F90 0200007F:D431 02 …" with the local and the other
// side's address and the state, all in hexadecimal.
std::size_t countOfThoseWhoAskFor(std::uint16_t port) {
    std::size_t count = 0;
    constexpr unsigned askedAndNotAnswered = 2;
    std::ifstream connections("/proc/net/tcp");
    std::string line;
    std::getline(connections, line);
    while (std::getline(connections, line)) {
        std::istringstream words(line);
        std::string number;
        std::string here;
        std::string there;
        unsigned state = 0;
        words >> number >> here >> there >> std::hex >> state;
        const auto colon = there.find(':');
        if (colon != std::string::npos && state == askedAndNotAnswered &&
            std::stoul(there.substr(colon + 1), nullptr, 16) == port) {
            ++count;
        }
    }
    return count;
}

}  // namespace

struct Gateway::Impl {
    explicit Impl(const Tcp::endpoint& endpoint) : acceptor(context), filler(context) {
        acceptor.open(endpoint.protocol());
        acceptor.set_option(Tcp::acceptor::reuse_address(true));
        acceptor.bind(endpoint);
    }
    ~Impl() {
        work.reset();
        context.stop();
        thread.join();
    }

    bool queueIsFull() {
        tcp_info info{};
        socklen_t size = sizeof info;
        getsockopt(acceptor.native_handle(), IPPROTO_TCP, TCP_INFO, &info, &size);
        return info.tcpi_unacked > info.tcpi_sacked;  // of a listener: waiting, and room for them
    }

    // On the thread, as everything below.
    void accept() {
        if (tls) {
            auto passage = std::make_shared<Passage<TlsStream>>(context, context, *tls);
            auto& socket = passage->client().next_layer();
            acceptor.async_accept(socket, [this, passage](ErrorCode error) {
                if (error) return;
                passage->client().async_handshake(asio::ssl::stream_base::server,
                                                  [this, passage](ErrorCode failed) {
                                                      if (!failed) passage->open(target);
                                                  });
                accept();
            });
        } else {
            auto passage = std::make_shared<Passage<Tcp::socket>>(context, context);
            auto& socket = passage->client();
            acceptor.async_accept(socket, [this, passage](ErrorCode error) {
                if (error) return;
                passage->open(target);
                accept();
            });
        }
    }

    asio::io_context context;
    std::optional<asio::executor_work_guard<asio::io_context::executor_type>> work{
        context.get_executor()};
    Tcp::acceptor acceptor;
    Tcp::socket filler;
    std::optional<asio::ssl::context> tls;
    std::uint16_t target = 0;
    std::thread thread{[this] { context.run(); }};
};

Gateway::Gateway(const std::string& address, std::uint16_t port)
    : impl_(std::make_unique<Impl>(Tcp::endpoint(asio::ip::make_address(address), port))) {}

Gateway::~Gateway() = default;

std::uint16_t Gateway::port() const {
    return impl_->acceptor.local_endpoint().port();
}

void Gateway::beSilent() {
    impl_->acceptor.listen(0);
    impl_->filler.connect(impl_->acceptor.local_endpoint());
    if (!impl_->queueIsFull()) throw std::runtime_error("the queue is not full");
}

bool Gateway::waitForClient() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (waitingClients() == 0) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

std::size_t Gateway::waitingClients() const {
    return countOfThoseWhoAskFor(port());
}

void Gateway::leadTo(std::uint16_t port) {
    impl_->acceptor.listen();
    asio::post(impl_->context, [impl = impl_.get(), port] {
        impl->target = port;
        impl->accept();
    });
}

void Gateway::leadTo(std::uint16_t port, const emulator::Identity& identity) {
    impl_->tls.emplace(asio::ssl::context::tls_server);
    impl_->tls->use_certificate_chain(asio::buffer(identity.certificates));
    impl_->tls->use_private_key(asio::buffer(identity.privateKey), asio::ssl::context::pem);
    leadTo(port);
}
