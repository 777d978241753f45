#pragma once

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <memory>
#include <optional>
#include <string>

#include "Network.h"

namespace emulator {

/// One accepted connection. It lives as long as one of its operations is pending: a read is pending
/// almost always, so it notices at once when the peer leaves. All its work runs on the strand that
/// is its socket's executor.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    using Tcp = boost::asio::ip::tcp;
    using TlsContext = std::shared_ptr<boost::asio::ssl::context>;

    /// No context: plain HTTP. `token` is kept for as long as the connection lives.
    Connection(Tcp::socket socket, TlsContext tls, Exchange& exchange, std::uint64_t id,
               std::shared_ptr<void> token);

    void start();
    /// Closes it if it is between two requests.
    void closeIfIdle();

private:
    using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;
    using ErrorCode = boost::system::error_code;

    void begin();
    void awaitClientHello();
    void handshake();

    void pump();
    void onRead(const ErrorCode& error, std::size_t length);
    void consumeInput();
    void onRequest();
    Request takeRequest();

    void run(RawAnswer answer);
    void nextStep();
    void perform(const RawAnswer::Send& step);
    void perform(const RawAnswer::Pause& step);
    void perform(const RawAnswer::Await& step);
    void perform(const RawAnswer::Silence& step);
    void perform(const RawAnswer::Reset& step);
    void perform(const RawAnswer::Close& step);
    void perform(const RawAnswer::CutOff& step);
    void sendRepeatedly(std::size_t length, std::size_t times);
    void writeThenGoOn(boost::asio::const_buffer bytes);
    void onAnswered();

    bool pauseBegins();
    void pauseEnds();
    void resetWhenSent(int attemptsLeft);
    void closeInOrder();
    void closeSocket();

    template <typename Handler>
    void readSome(Handler handler);
    template <typename Handler>
    void write(boost::asio::const_buffer bytes, Handler handler);

    std::shared_ptr<void> token_;
    Tcp::socket socket_;
    TlsContext tlsContext_;
    std::optional<boost::asio::ssl::stream<Tcp::socket&>> tls_;  // engaged: bytes go through it
    Exchange& exchange_;
    std::uint64_t id_;
    boost::asio::steady_timer timer_;

    std::array<char, 16384> readBuffer_{};
    std::string input_;  // read, not yet consumed
    bool readPending_ = false;
    bool inputEnded_ = false;
    std::optional<Parser> parser_;

    bool answering_ = false;
    RawAnswer answer_;
    std::size_t step_ = 0;
    std::string repeated_;  // what a step that repeats its bytes sends at once
    bool pausing_ = false;
    bool closing_ = false;
    bool closingWhenAnswered_ = false;
};

}  // namespace emulator
