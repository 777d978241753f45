#include "Network.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/strand.hpp>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "Connection.h"

namespace emulator {

namespace asio = boost::asio;
using Tcp = asio::ip::tcp;

namespace {

constexpr unsigned char offeredProtocol[] = "\x08http/1.1";

// HTTP/2 in front of the emulator is the business of a reverse proxy.
int chooseProtocol(SSL*, const unsigned char** chosen, unsigned char* length,
                   const unsigned char* offered, unsigned int offeredLength, void*) {
    const auto outcome =
        SSL_select_next_proto(const_cast<unsigned char**>(chosen), length, offeredProtocol,
                              sizeof offeredProtocol - 1, offered, offeredLength);
    return outcome == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_NOACK;
}

Connection::TlsContext makeContext(const Identity& identity) {
    auto context = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_server);
    context->set_options(asio::ssl::context::no_tlsv1 | asio::ssl::context::no_tlsv1_1);
    context->use_certificate_chain(asio::buffer(identity.certificates));
    context->use_private_key(asio::buffer(identity.privateKey), asio::ssl::context::pem);
    SSL_CTX_set_alpn_select_cb(context->native_handle(), chooseProtocol, nullptr);
    return context;
}

/// Counts what is open by the life of the tokens that it gives out.
class OpenCount : public std::enable_shared_from_this<OpenCount> {
public:
    std::shared_ptr<void> token() {
        change(1);
        return {nullptr, [self = shared_from_this()](void*) { self->change(-1); }};
    }
    std::size_t count() const {
        const std::lock_guard lock(mutex_);
        return static_cast<std::size_t>(count_);
    }
    bool wait(std::size_t atMost, std::chrono::milliseconds timeout) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, timeout,
                                 [&] { return static_cast<std::size_t>(count_) <= atMost; });
    }

private:
    void change(long by) {
        {
            const std::lock_guard lock(mutex_);
            count_ += by;
        }
        changed_.notify_all();
    }
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    long count_ = 0;
};

struct Listener {
    Listener(asio::io_context& context, std::uint16_t port, bool isTls)
        : acceptor(asio::make_strand(context)), timer(acceptor.get_executor()), tls(isTls) {
        const Tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
        acceptor.open(endpoint.protocol());
        acceptor.set_option(Tcp::acceptor::reuse_address(true));
        acceptor.bind(endpoint);
        acceptor.listen(4096);
    }
    Tcp::acceptor acceptor;
    asio::steady_timer timer;
    bool tls;
};

}  // namespace

struct Network::Impl {
    explicit Impl(Exchange& theExchange) : exchange(theExchange) {}

    void accept(Listener& listener) {
        listener.acceptor.async_accept(
            asio::make_strand(context),
            [this, &listener](boost::system::error_code error, Tcp::socket socket) {
                if (error) {
                    acceptLater(listener);
                    return;
                }
                serve(std::move(socket), listener.tls);
                accept(listener);
            });
    }

    // Out of descriptors, most likely: trying again at once would only burn the processor.
    void acceptLater(Listener& listener) {
        listener.timer.expires_after(std::chrono::milliseconds(20));
        listener.timer.async_wait([this, &listener](boost::system::error_code error) {
            if (!error) {
                accept(listener);
            }
        });
    }

    void serve(Tcp::socket socket, bool tls) {
        std::shared_ptr<Connection> connection;
        {
            const std::lock_guard lock(mutex);
            const auto id = ++accepted;
            connection = std::make_shared<Connection>(std::move(socket), tls ? tlsContext : nullptr,
                                                      exchange, id, open->token());
            std::erase_if(connections, [](const auto& entry) { return entry.second.expired(); });
            connections.emplace(id, connection);
        }
        connection->start();
    }

    Exchange& exchange;
    const std::shared_ptr<OpenCount> open = std::make_shared<OpenCount>();
    asio::io_context context;
    std::optional<Listener> http;
    std::optional<Listener> https;
    std::vector<std::thread> threads;

    mutable std::mutex mutex;  // guards what follows
    Connection::TlsContext tlsContext;
    std::unordered_map<std::uint64_t, std::weak_ptr<Connection>> connections;
    std::uint64_t accepted = 0;
};

Network::Network(Exchange& exchange, std::uint16_t httpPort, std::uint16_t httpsPort,
                 const Identity& identity, std::size_t threads)
    : impl_(std::make_unique<Impl>(exchange)) {
    impl_->tlsContext = makeContext(identity);
    impl_->http.emplace(impl_->context, httpPort, false);
    impl_->https.emplace(impl_->context, httpsPort, true);
    impl_->accept(*impl_->http);
    impl_->accept(*impl_->https);
    for (std::size_t i = 0; i < std::max<std::size_t>(threads, 1); ++i) {
        impl_->threads.emplace_back([impl = impl_.get()] { impl->context.run(); });
    }
}

Network::~Network() {
    impl_->context.stop();
    for (auto& thread : impl_->threads) {
        thread.join();
    }
}

std::uint16_t Network::httpPort() const {
    return impl_->http->acceptor.local_endpoint().port();
}

std::uint16_t Network::httpsPort() const {
    return impl_->https->acceptor.local_endpoint().port();
}

void Network::present(const Identity& identity) {
    auto context = makeContext(identity);
    const std::lock_guard lock(impl_->mutex);
    impl_->tlsContext.swap(context);
}

std::size_t Network::openConnections() const {
    return impl_->open->count();
}

bool Network::waitForOpenConnections(std::size_t atMost, std::chrono::milliseconds timeout) const {
    return impl_->open->wait(atMost, timeout);
}

std::uint64_t Network::acceptedConnections() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->accepted;
}

void Network::closeIdleConnections() {
    const std::lock_guard lock(impl_->mutex);
    for (const auto& [id, weak] : impl_->connections) {
        if (auto connection = weak.lock()) {
            connection->closeIfIdle();
        }
    }
}

}  // namespace emulator
