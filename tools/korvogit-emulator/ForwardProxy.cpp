#include "ForwardProxy.h"

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "Digest.h"

namespace emulator {

namespace asio = boost::asio;
using Tcp = asio::ip::tcp;
using ErrorCode = boost::system::error_code;

namespace {

std::string refusal(unsigned status, const std::string& headers = {}) {
    return "HTTP/1.1 " + std::to_string(status) + " " + std::string(usualReason(status)) + "\r\n" +
           headers + "Content-Length: 0\r\nConnection: close\r\n\r\n";
}

/// Reads a request's head, without its last empty line.
Request parseHead(std::string_view head) {
    const auto line = [&head] {
        const auto end = std::min(head.find("\r\n"), head.size());
        const auto result = head.substr(0, end);
        head.remove_prefix(std::min(head.size(), end + 2));
        return result;
    };
    Request request;
    const auto first = line();
    const auto blank = std::min(first.find(' '), first.size());
    const auto target = first.substr(std::min(blank + 1, first.size()));
    request.method = first.substr(0, blank);
    request.target = target.substr(0, target.rfind(' '));
    while (!head.empty()) {
        const auto field = line();
        const auto colon = std::min(field.find(':'), field.size());
        const auto value = field.find_first_not_of(" \t", std::min(colon + 1, field.size()));
        request.headers.add(std::string(field.substr(0, colon)),
                            std::string(value == field.npos ? "" : field.substr(value)));
    }
    return request;
}

/// Takes scheme and authority off an absolute target.
void splitTarget(Request& request) {
    if (request.method == "CONNECT") {
        request.authority = request.target;
        return;
    }
    const auto scheme = request.target.find("://");
    const auto begin = scheme == std::string::npos ? 0 : scheme + 3;
    const auto slash = std::min(request.target.find('/', begin), request.target.size());
    request.authority = request.target.substr(begin, slash - begin);
    request.path = slash == request.target.size() ? "/" : request.target.substr(slash);
    if (request.authority.find(':') == std::string::npos) {
        request.authority += ":80";
    }
}

/// The head that the target gets of a plain request: for one exchange, without the proxy's fields.
std::string forwardedHead(const Request& request) {
    std::string head = request.method + " " + request.path + " HTTP/1.1\r\n";
    for (const auto& [name, value] : request.headers) {
        const bool forProxy = equalIgnoringCase(name, "Proxy-Authorization") ||
                              equalIgnoringCase(name, "Proxy-Connection") ||
                              equalIgnoringCase(name, "Connection");
        if (!forProxy) {
            head.append(name).append(": ").append(value).append("\r\n");
        }
    }
    return head + "Connection: close\r\n\r\n";
}

}  // namespace

struct ForwardProxy::Impl {
    explicit Impl(Behaviour theBehaviour)
        : behaviour(theBehaviour),
          acceptor(context, Tcp::endpoint(asio::ip::address_v4::loopback(), 0)) {}

    void accept();
    std::optional<std::uint16_t> localPort(const std::string& authority) const;

    mutable std::mutex mutex;
    mutable std::condition_variable arrived;
    Behaviour behaviour;                          // guarded
    std::map<std::string, std::uint16_t> routes;  // guarded
    std::vector<Request> requests;                // guarded

    asio::io_context context;
    Tcp::acceptor acceptor;
    std::thread thread;
};

namespace {

/// One client's connection and the one that is made for it.
class Relay : public std::enable_shared_from_this<Relay> {
public:
    Relay(Tcp::socket client, std::function<std::optional<std::uint16_t>(const std::string&)> route,
          std::function<ForwardProxy::Behaviour(const Request&)> onRequest)
        : client_(std::move(client)),
          server_(client_.get_executor()),
          route_(std::move(route)),
          onRequest_(std::move(onRequest)) {}

    void start() {
        asio::async_read_until(client_, asio::dynamic_buffer(head_, 65536), "\r\n\r\n",
                               [self = shared_from_this()](ErrorCode error, std::size_t length) {
                                   if (!error) {
                                       self->onHead(length);
                                   }
                               });
    }

private:
    void onHead(std::size_t length) {
        request_ = parseHead(std::string_view(head_).substr(0, length - 4));
        splitTarget(request_);
        head_.erase(0, length);  // what remains belongs to the target
        const auto behaviour = onRequest_(request_);
        const auto expected =
            "Basic " + base64(ForwardProxy::user() + ":" + ForwardProxy::password());
        if (behaviour == ForwardProxy::Behaviour::Forbid) {
            refuse(refusal(403));
        } else if (behaviour == ForwardProxy::Behaviour::Authenticate &&
                   request_.headers.get("Proxy-Authorization") != expected) {
            refuse(refusal(407, "Proxy-Authenticate: Basic realm=\"emulator\"\r\n"));
        } else if (behaviour == ForwardProxy::Behaviour::Reset) {
            ErrorCode ignored;
            client_.set_option(asio::socket_base::linger(true, 0), ignored);
            client_.close(ignored);
        } else if (behaviour == ForwardProxy::Behaviour::Silent) {
            relay(client_, server_, fromClient_);  // reads on only to see the client leave
        } else {
            connect();
        }
    }

    void connect() {
        const auto port = route_(request_.authority);
        if (!port) {
            refuse(refusal(502));
            return;
        }
        server_.async_connect({asio::ip::address_v4::loopback(), *port},
                              [self = shared_from_this()](ErrorCode error) {
                                  error ? self->refuse(refusal(502)) : self->onConnected();
                              });
    }

    void onConnected() {
        const bool tunnel = request_.method == "CONNECT";
        toServer_ = (tunnel ? "" : forwardedHead(request_)) + head_;
        toClient_ = tunnel ? "HTTP/1.1 200 Connection established\r\n\r\n" : "";
        asio::async_write(client_, asio::buffer(toClient_),
                          [self = shared_from_this()](ErrorCode, std::size_t) {
                              self->relay(self->server_, self->client_, self->fromServer_);
                          });
        asio::async_write(server_, asio::buffer(toServer_),
                          [self = shared_from_this()](ErrorCode, std::size_t) {
                              self->relay(self->client_, self->server_, self->fromClient_);
                          });
    }

    using Buffer = std::array<char, 16384>;

    void relay(Tcp::socket& from, Tcp::socket& to, Buffer& buffer) {
        from.async_read_some(asio::buffer(buffer), [self = shared_from_this(), &from, &to, &buffer](
                                                       ErrorCode error, std::size_t length) {
            if (error) {
                ErrorCode ignored;
                to.shutdown(Tcp::socket::shutdown_send, ignored);
                return;
            }
            if (!to.is_open()) {
                self->relay(from, to, buffer);
                return;
            }
            asio::async_write(to, asio::buffer(buffer.data(), length),
                              [self, &from, &to, &buffer](ErrorCode writeError, std::size_t) {
                                  if (!writeError) {
                                      self->relay(from, to, buffer);
                                  }
                              });
        });
    }

    void refuse(std::string answer) {
        toClient_ = std::move(answer);
        asio::async_write(client_, asio::buffer(toClient_),
                          [self = shared_from_this()](ErrorCode, std::size_t) {
                              ErrorCode ignored;
                              self->client_.shutdown(Tcp::socket::shutdown_send, ignored);
                          });
    }

    Tcp::socket client_;
    Tcp::socket server_;
    std::function<std::optional<std::uint16_t>(const std::string&)> route_;
    std::function<ForwardProxy::Behaviour(const Request&)> onRequest_;
    Request request_;
    std::string head_;
    std::string toClient_;
    std::string toServer_;
    Buffer fromClient_{};
    Buffer fromServer_{};
};

}  // namespace

void ForwardProxy::Impl::accept() {
    acceptor.async_accept([this](ErrorCode error, Tcp::socket socket) {
        if (!error) {
            std::make_shared<Relay>(
                std::move(socket),
                [this](const std::string& authority) { return localPort(authority); },
                [this](const Request& request) {
                    const std::lock_guard lock(mutex);
                    requests.push_back(request);
                    arrived.notify_all();
                    return behaviour;
                })
                ->start();
        }
        accept();
    });
}

std::optional<std::uint16_t> ForwardProxy::Impl::localPort(const std::string& authority) const {
    {
        const std::lock_guard lock(mutex);
        if (const auto found = routes.find(authority); found != routes.end()) {
            return found->second;
        }
    }
    const auto colon = authority.rfind(':');
    const auto host = authority.substr(0, colon);
    if (colon == std::string::npos || (host != "localhost" && host != "127.0.0.1")) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(std::strtoul(authority.c_str() + colon + 1, nullptr, 10));
}

ForwardProxy::ForwardProxy(Behaviour behaviour) : impl_(std::make_unique<Impl>(behaviour)) {
    impl_->accept();
    impl_->thread = std::thread([impl = impl_.get()] { impl->context.run(); });
}

ForwardProxy::~ForwardProxy() {
    impl_->context.stop();
    impl_->thread.join();
}

std::uint16_t ForwardProxy::port() const {
    return impl_->acceptor.local_endpoint().port();
}

std::string ForwardProxy::url() const {
    return "http://127.0.0.1:" + std::to_string(port());
}

void ForwardProxy::route(std::string hostAndPort, std::uint16_t localPort) {
    const std::lock_guard lock(impl_->mutex);
    impl_->routes.insert_or_assign(std::move(hostAndPort), localPort);
}

void ForwardProxy::setBehaviour(Behaviour behaviour) {
    const std::lock_guard lock(impl_->mutex);
    impl_->behaviour = behaviour;
}

std::vector<Request> ForwardProxy::requests() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->requests;
}

bool ForwardProxy::waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(impl_->mutex);
    return impl_->arrived.wait_for(lock, timeout, [&] { return impl_->requests.size() >= count; });
}

}  // namespace emulator
