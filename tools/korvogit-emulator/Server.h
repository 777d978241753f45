#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "Accounts.h"
#include "CertificateAuthority.h"
#include "Faults.h"
#include "Gate.h"
#include "Message.h"
#include "Network.h"
#include "OAuthApplication.h"
#include "RawAnswer.h"

namespace emulator {

struct ServerOptions {
    std::uint16_t httpPort = 0;   ///< 0: a free one
    std::uint16_t httpsPort = 0;  ///< 0: a free one
    Accounts accounts = Accounts::demo();
    std::vector<OAuthApplication> applications = OAuthApplication::demo();
    /// Names that the certificate is valid for besides `CertificateAuthority::usualNames()`.
    std::vector<std::string> extraNames{};
    /// Answers are made in these threads. One request at a time per connection.
    std::size_t threads = 2;
    /// Requests per hour and token before GitHub refuses. A load test sets it high.
    std::int64_t rateLimit = 5000;
    /// Refuse, as the real GitLab does, the one value that the library sends and GitLab does not
    /// know: "order_by=last_activity_date".
    bool strict = false;
    /// Off: Bitbucket Cloud answers 410 to a list across workspaces, as the service does since it
    /// withdrew it.
    bool listsAcrossWorkspaces = true;
    /// So many requests are kept for `requests()`, the oldest go first.
    std::size_t recordedRequests = 10'000;
    /// Seconds since 1970, for expiry and limits; empty: the system's clock.
    std::function<std::int64_t()> clock{};
};

/// Which requests are meant. An empty member means any.
struct Match {
    std::string host{};    ///< the authority with or without its port
    std::string path{};    ///< the path, without query; with "*" at its end, what it begins with
    std::string method{};  ///< "GET" also means HEAD only if it says so: exact
    std::function<bool(const Request&)> also{};

    bool operator()(const Request& request) const;
};

/// What a script gives: an answer, or bytes and events below HTTP.
using Reply = std::variant<Answer, RawAnswer>;
/// Called in one of the server's threads, perhaps in several at once. It must not block: to make a
/// request wait, hold it.
using Responder = std::function<Reply(const Request&)>;

/// Where an answer is held.
enum class HoldStage {
    BeforeHeaders,  ///< the request is read and answered, nothing is sent
    AfterHeaders,   ///< the whole head is sent, nothing of the body
    InBody,         ///< the head and half of the body are sent
};

/// Answers held back until they are released; released at the latest by the destructor.
/// While held, a connection whose client leaves is closed.
class Hold {
public:
    explicit Hold(std::shared_ptr<Gate> gate) : gate_(std::move(gate)) {}
    ~Hold();
    Hold(Hold&&) = default;
    Hold& operator=(Hold&&) = delete;
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    /// Waits until so many answers have come to this point; false when the time is over first.
    bool waitUntilReached(std::size_t answers = 1,
                          std::chrono::milliseconds timeout = std::chrono::seconds(20));
    /// Lets them go, and all that come later.
    void release();

private:
    std::shared_ptr<Gate> gate_;
};

/// An HTTP and an HTTPS listener on 127.0.0.1 that answer as the hosting services do.
///
/// Both speak HTTP/1.1 only. Which service answers is decided by the request's Host and path, see
/// `HostingServices.h`; what is scripted comes first. All operations are safe from any thread,
/// except `stop` and the destructor beside another one.
///
///     emulator::Server server;
///     server.script({.path = "/user"}, emulator::jsonAnswer(500, "{}"), 1);   // once, then as
///     usual auto hold = server.hold({.path = "/user/repos"}); … start a client, with
///     server.caFile() and "api.github.com:443" mapped to server.httpsPort()
///     hold.waitUntilReached();
class Server {
public:
    static constexpr std::size_t always = std::numeric_limits<std::size_t>::max();
    static constexpr std::chrono::milliseconds patience = std::chrono::seconds(20);

    /// Listens when it returns. Throws std::system_error when a port is taken.
    explicit Server(ServerOptions options = {});
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Closes listeners and connections, silent and busy ones too, and ends the threads. What was
    /// recorded stays.
    void stop();

    std::uint16_t httpPort() const;
    std::uint16_t httpsPort() const;
    /// "http://localhost:PORT" and "https://localhost:PORT".
    std::string httpURL() const;
    std::string httpsURL() const;
    /// The PEM file that a client has to trust. It goes with the server.
    const std::filesystem::path& caFile() const;
    const Accounts& accounts() const;
    const std::vector<OAuthApplication>& applications() const;

    /// What the HTTPS listener shows from the next connection on. Valid at first.
    void presentCertificate(Leaf kind);

    // Scripts. The first that was added, matches and has times left is taken.

    void script(Match match, Reply reply, std::size_t times = always);
    void script(Match match, Responder responder, std::size_t times = always);
    /// Spoils the answers that match, scripted (except raw ones) or a service's.
    void fault(Match match, Fault fault, std::size_t times = always);
    /// Disturbs connections as they open, before HTTP; the steps' bytes go out unencrypted. A
    /// connection is not used further when they are done.
    void disturb(ConnectionStage stage, RawAnswer steps, std::size_t times = always);
    /// Forgets scripts, faults, disturbances, and holds (those that have begun still wait).
    void clearScripts();

    /// Holds the answers that match until the result is released. Raw and spoilt answers are held
    /// before their first byte whatever the stage.
    [[nodiscard]] Hold hold(Match match, HoldStage stage = HoldStage::BeforeHeaders);

    // What came in.

    /// The recorded requests in the order of their arrival.
    std::vector<Request> requests() const;
    /// Those of them that match.
    std::vector<Request> requests(const Match& match) const;
    /// How many arrived since the start or the last `forgetRequests`, recorded or not.
    std::size_t requestCount() const;
    void forgetRequests();
    /// Waits until at least so many have arrived; false when the time is over first. A request
    /// counts before its answer begins.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds timeout = patience) const;

    std::uint64_t acceptedConnections() const;
    std::size_t openConnections() const;
    /// Waits until no more than so many connections are open; false when the time is over first.
    bool waitForOpenConnections(std::size_t atMost,
                                std::chrono::milliseconds timeout = patience) const;
    /// Closes the connections that wait for a next request, as a server's keep-alive limit does.
    void closeIdleConnections();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace emulator
