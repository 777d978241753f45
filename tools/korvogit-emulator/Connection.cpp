#include "Connection.h"

#include <sys/ioctl.h>

#include <linux/sockios.h>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <utility>

namespace emulator {

namespace asio = boost::asio;
namespace http = boost::beast::http;

namespace {

constexpr std::size_t maximalUnreadInput = 1 << 20;
constexpr std::uint32_t maximalRequestHeader = 256 * 1024;
constexpr std::uint64_t maximalRequestBody = 64 << 20;
constexpr auto lingering = std::chrono::seconds(2);

std::string lowerCase(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

RawAnswer badRequest() {
    return RawAnswer()
        .send("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
        .close();
}

}  // namespace

Connection::Connection(Tcp::socket socket, TlsContext tls, Exchange& exchange, std::uint64_t id,
                       std::shared_ptr<void> token)
    : token_(std::move(token)),
      socket_(std::move(socket)),
      tlsContext_(std::move(tls)),
      exchange_(exchange),
      id_(id),
      timer_(socket_.get_executor()) {}

void Connection::start() {
    asio::dispatch(socket_.get_executor(), [self = shared_from_this()] { self->begin(); });
}

void Connection::closeIfIdle() {
    asio::post(socket_.get_executor(), [self = shared_from_this()] {
        const bool onLastStep = self->step_ == self->answer_.steps().size();
        const bool begun = !self->input_.empty() || (self->parser_ && self->parser_->got_some());
        if (self->answering_ && onLastStep) {
            // The client may have its answer before this side knows that it is sent.
            self->closingWhenAnswered_ = true;
        } else if (!self->answering_ && !begun) {
            self->closeInOrder();
        }
    });
}

void Connection::begin() {
    ErrorCode ignored;
    socket_.set_option(Tcp::no_delay(true), ignored);
    parser_.emplace();
    if (auto steps = exchange_.disturbance(ConnectionStage::Accepted, tlsContext_ != nullptr)) {
        run(*std::move(steps));
        pump();
    } else if (tlsContext_) {
        awaitClientHello();
    } else {
        pump();
    }
}

void Connection::awaitClientHello() {
    auto steps = exchange_.disturbance(ConnectionStage::ClientHello, true);
    if (!steps) {
        handshake();
        return;
    }
    socket_.async_wait(Tcp::socket::wait_read,
                       [self = shared_from_this(), steps = *std::move(steps)](ErrorCode error) {
                           if (!error) {
                               self->run(steps);
                               self->pump();
                           }
                       });
}

void Connection::handshake() {
    tls_.emplace(socket_, *tlsContext_);
    tls_->async_handshake(asio::ssl::stream_base::server,
                          [self = shared_from_this()](ErrorCode error) {
                              error ? self->closeSocket() : self->pump();
                          });
}

template <typename Handler>
void Connection::readSome(Handler handler) {
    if (tls_) {
        tls_->async_read_some(asio::buffer(readBuffer_), std::move(handler));
    } else {
        socket_.async_read_some(asio::buffer(readBuffer_), std::move(handler));
    }
}

template <typename Handler>
void Connection::write(asio::const_buffer bytes, Handler handler) {
    if (tls_) {
        asio::async_write(*tls_, bytes, std::move(handler));
    } else {
        asio::async_write(socket_, bytes, std::move(handler));
    }
}

void Connection::pump() {
    if (readPending_ || inputEnded_ || input_.size() > maximalUnreadInput) {
        return;
    }
    readPending_ = true;
    readSome([self = shared_from_this()](ErrorCode error, std::size_t length) {
        self->onRead(error, length);
    });
}

void Connection::onRead(const ErrorCode& error, std::size_t length) {
    readPending_ = false;
    input_.append(readBuffer_.data(), length);
    if (error) {
        // A client that has closed only its sending side still gets its answer.
        inputEnded_ = true;
        if (!answering_ || pausing_ || closing_) {
            closeSocket();
        }
        return;
    }
    if (closing_) {
        input_.clear();
    }
    consumeInput();
    pump();
}

void Connection::consumeInput() {
    if (answering_ || closing_ || input_.empty()) {
        return;
    }
    parser_->header_limit(maximalRequestHeader);
    parser_->body_limit(maximalRequestBody);
    parser_->eager(true);
    ErrorCode error;
    const std::size_t consumed = parser_->put(asio::buffer(input_), error);
    input_.erase(0, consumed);
    if (parser_->is_done()) {
        onRequest();
    } else if (error && error != http::error::need_more) {
        run(badRequest());
    }
}

void Connection::onRequest() {
    auto request = takeRequest();
    parser_.emplace();
    run(exchange_.answer(request));
}

Request Connection::takeRequest() {
    auto& message = parser_->get();
    Request request;
    request.method = std::string(message.method_string());
    request.target = std::string(message.target());
    for (const auto& field : message) {
        request.headers.add(std::string(field.name_string()), std::string(field.value()));
    }
    request.http10 = message.version() < 11;
    request.keepAlive = message.keep_alive();
    request.body = std::move(message.body());
    request.authority = request.headers.get("Host").value_or("");

    std::string rest = request.target;
    if (const auto scheme = rest.find("://"); scheme < rest.find('/')) {
        const auto slash = std::min(rest.find('/', scheme + 3), rest.size());
        request.authority = rest.substr(scheme + 3, slash - scheme - 3);
        rest.erase(0, slash);
    }
    request.authority = lowerCase(request.authority);
    const auto mark = rest.find('?');
    request.path = rest.substr(0, mark);
    request.query = mark == rest.npos ? "" : rest.substr(mark + 1);

    request.tls = tls_.has_value();
    if (tls_) {
        const char* name = SSL_get_servername(tls_->native_handle(), TLSEXT_NAMETYPE_host_name);
        request.serverName = name ? name : "";
        request.resumed = SSL_session_reused(tls_->native_handle()) == 1;
    }
    request.connection = id_;
    return request;
}

void Connection::run(RawAnswer answer) {
    answering_ = true;
    answer_ = std::move(answer);
    step_ = 0;
    nextStep();
}

void Connection::nextStep() {
    if (!socket_.is_open()) {
        return;
    }
    if (step_ == answer_.steps().size()) {
        onAnswered();
        return;
    }
    std::visit([this](const auto& step) { perform(step); }, answer_.steps()[step_++]);
}

void Connection::perform(const RawAnswer::Send& step) {
    if (step.bytes.empty()) {
        nextStep();
    } else if (step.times == 1) {
        writeThenGoOn(asio::buffer(step.bytes));
    } else {
        // Many short texts go out together: each write costs a system call and a TLS record.
        const std::size_t atOnce = std::min(step.times, 1 + 32768 / step.bytes.size());
        repeated_.clear();
        for (std::size_t i = 0; i < atOnce; ++i) {
            repeated_ += step.bytes;
        }
        sendRepeatedly(step.bytes.size(), step.times);
    }
}

void Connection::writeThenGoOn(asio::const_buffer bytes) {
    write(bytes, [self = shared_from_this()](ErrorCode error, std::size_t) {
        error ? self->closeSocket() : self->nextStep();
    });
}

void Connection::sendRepeatedly(std::size_t length, std::size_t times) {
    const std::size_t atOnce = std::min(times, repeated_.size() / length);
    const auto bytes = asio::buffer(repeated_, atOnce * length);
    if (times == atOnce) {
        writeThenGoOn(bytes);
        return;
    }
    const std::size_t left = times == RawAnswer::endless ? times : times - atOnce;
    write(bytes, [self = shared_from_this(), length, left](ErrorCode error, std::size_t) {
        error ? self->closeSocket() : self->sendRepeatedly(length, left);
    });
}

void Connection::perform(const RawAnswer::Pause& step) {
    if (!pauseBegins()) {
        return;
    }
    timer_.expires_after(step.duration);
    timer_.async_wait([self = shared_from_this()](ErrorCode error) {
        if (!error) {
            self->pauseEnds();
        }
    });
}

void Connection::perform(const RawAnswer::Await& step) {
    pauseBegins();
    step.gate->arrive([weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            auto executor = self->socket_.get_executor();
            asio::post(executor, [self = std::move(self)] { self->pauseEnds(); });
        }
    });
}

void Connection::perform(const RawAnswer::Silence&) {
    pauseBegins();
}

bool Connection::pauseBegins() {
    pausing_ = true;
    if (inputEnded_) {
        closeSocket();
    }
    return !inputEnded_;
}

void Connection::pauseEnds() {
    pausing_ = false;
    nextStep();
}

void Connection::perform(const RawAnswer::Reset&) {
    resetWhenSent(2000);
}

// RST throws away what the socket still has to send, so a reset "in the body" first lets the bytes
// before it get out. A peer that reads nothing may hold them up; hence the limit.
void Connection::resetWhenSent(int attemptsLeft) {
    int unsent = 0;
    ioctl(socket_.native_handle(), SIOCOUTQ, &unsent);
    if (unsent > 0 && attemptsLeft > 0) {
        timer_.expires_after(std::chrono::milliseconds(1));
        timer_.async_wait([self = shared_from_this(), attemptsLeft](ErrorCode error) {
            if (!error && self->socket_.is_open()) {
                self->resetWhenSent(attemptsLeft - 1);
            }
        });
        return;
    }
    ErrorCode ignored;
    socket_.set_option(asio::socket_base::linger(true, 0), ignored);
    closeSocket();
}

void Connection::perform(const RawAnswer::Close&) {
    closeInOrder();
}

void Connection::perform(const RawAnswer::CutOff&) {
    closing_ = true;
    ErrorCode ignored;
    socket_.shutdown(Tcp::socket::shutdown_send, ignored);
    if (inputEnded_) {
        closeSocket();
    }
}

void Connection::onAnswered() {
    if (!answer_.keepsAlive() || inputEnded_ || closingWhenAnswered_) {
        closeInOrder();
        return;
    }
    answering_ = false;
    consumeInput();
    pump();
}

// Closing while the peer still sends would reset the connection and could take the answer's end
// from it, so the socket stays until the peer has closed too, or for a while.
void Connection::closeInOrder() {
    closing_ = true;
    timer_.expires_after(lingering);
    timer_.async_wait([self = shared_from_this()](ErrorCode error) {
        if (!error) {
            self->closeSocket();
        }
    });
    if (tls_) {
        tls_->async_shutdown([self = shared_from_this()](ErrorCode) { self->closeSocket(); });
        return;
    }
    ErrorCode ignored;
    socket_.shutdown(Tcp::socket::shutdown_send, ignored);
    if (inputEnded_) {
        closeSocket();
    }
}

void Connection::closeSocket() {
    ErrorCode ignored;
    timer_.cancel(ignored);
    socket_.close(ignored);
}

}  // namespace emulator
