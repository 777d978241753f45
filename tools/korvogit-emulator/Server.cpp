#include "Server.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>

#include "Authorization.h"
#include "Dates.h"
#include "HostingServices.h"
#include "Wire.h"

namespace emulator {

namespace {

/// What was registered for requests, each for a number of times; the first that fits is taken.
template <typename Criterion, typename Value>
class Table {
public:
    void add(Criterion criterion, Value value, std::size_t times) {
        entries_.push_back({std::move(criterion), std::move(value), times});
    }

    template <typename Fits>
    std::optional<Value> take(Fits fits) {
        for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
            if (entry->times > 0 && fits(entry->criterion)) {
                entry->times -= entry->times == Server::always ? 0 : 1;
                return entry->value;
            }
        }
        return std::nullopt;
    }

    void clear() { entries_.clear(); }

private:
    struct Entry {
        Criterion criterion;
        Value value;
        std::size_t times;
    };
    std::deque<Entry> entries_;
};

struct HeldPlace {
    Match match;
    HoldStage stage;
    std::shared_ptr<Gate> gate;
};

void awaitAt(RawAnswer& answer, const std::vector<HeldPlace>& places,
             std::optional<HoldStage> stage = std::nullopt) {
    for (const auto& place : places) {
        if (!stage || place.stage == *stage) {
            answer.await(place.gate);
        }
    }
}

RawAnswer withHolds(const Answer& answer, const Request& request,
                    const std::vector<HeldPlace>& places) {
    if (places.empty()) {
        return wireAnswer(answer, request);
    }
    const auto body = bodyBytes(answer, request);
    RawAnswer steps;
    awaitAt(steps, places, HoldStage::BeforeHeaders);
    steps.send(headBytes(answer, request));
    awaitAt(steps, places, HoldStage::AfterHeaders);
    steps.send(body.substr(0, body.size() / 2));
    awaitAt(steps, places, HoldStage::InBody);
    steps.send(body.substr(body.size() / 2));
    return steps.keepAlive(staysOpen(answer, request));
}

/// A request that a service was not made for must not end a server that others are using.
Answer answerOf(HostingService& service, const Request& request) {
    try {
        return service.answer(request);
    } catch (const std::exception& error) {
        return textAnswer(500,
                          std::string("The emulator cannot answer this: ") + error.what() + "\n");
    }
}

std::optional<Fault> faultOfToken(const Request& request) {
    const auto secret = readAuthorization(request).secret;
    if (!secret.starts_with(faults::tokenPrefix)) {
        return std::nullopt;
    }
    return faults::named(secret.substr(faults::tokenPrefix.size()));
}

}  // namespace

bool Match::operator()(const Request& request) const {
    const bool hostFits = host.empty() || equalIgnoringCase(host, request.authority) ||
                          equalIgnoringCase(host, request.host());
    const bool pathFits =
        path.empty() || path == request.path ||
        (path.ends_with('*') && request.path.starts_with(path.substr(0, path.size() - 1)));
    return hostFits && pathFits && (method.empty() || method == request.method) &&
           (!also || also(request));
}

Hold::~Hold() {
    if (gate_) {
        gate_->open();
    }
}

bool Hold::waitUntilReached(std::size_t answers, std::chrono::milliseconds timeout) {
    return gate_->waitForArrivals(answers, timeout);
}

void Hold::release() {
    gate_->open();
}

struct Server::Impl : Exchange {
    explicit Impl(ServerOptions theOptions)
        : options(std::move(theOptions)),
          authority(options.extraNames),
          services(makeHostingServices(
              {options.accounts, options.applications, options.rateLimit,
               options.clock ? options.clock : std::function<std::int64_t()>(systemSeconds),
               options.strict, options.listsAcrossWorkspaces})) {}

    RawAnswer answer(Request& request) override {
        record(request);
        const auto places = heldPlaces(request);
        auto reply = makeReply(request);
        RawAnswer* raw = std::get_if<RawAnswer>(&reply);
        if (raw == nullptr) {
            const auto plain = gzipCache.encoded(std::get<Answer>(std::move(reply)), request);
            const auto fault = findFault(request);
            if (!fault) {
                return withHolds(plain, request, places);
            }
            reply = (*fault)(request, plain);
            raw = &std::get<RawAnswer>(reply);
        }
        RawAnswer first;
        awaitAt(first, places);
        return raw->prepend(first);
    }

    std::optional<RawAnswer> disturbance(ConnectionStage stage, bool) override {
        const std::lock_guard lock(scriptMutex);
        return disturbances.take([&](ConnectionStage wanted) { return wanted == stage; });
    }

    void record(Request& request) {
        {
            const std::lock_guard lock(recordMutex);
            request.number = ++received;
            recorded.push_back(request);
            if (recorded.size() > options.recordedRequests) {
                recorded.pop_front();
            }
        }
        arrived.notify_all();
    }

    Reply makeReply(const Request& request) {
        std::optional<Responder> responder;
        {
            const std::lock_guard lock(scriptMutex);
            responder = scripts.take([&](const Match& match) { return match(request); });
        }
        if (responder) {
            return (*responder)(request);
        }
        for (const auto& service : services) {
            if (service->serves(request)) {
                return answerOf(*service, request);
            }
        }
        return textAnswer(404, "No hosting service is emulated at this host and path.\n");
    }

    std::optional<Fault> findFault(const Request& request) {
        {
            const std::lock_guard lock(scriptMutex);
            if (auto fault = faults.take([&](const Match& match) { return match(request); })) {
                return fault;
            }
        }
        return faultOfToken(request);
    }

    std::vector<HeldPlace> heldPlaces(const Request& request) {
        const std::lock_guard lock(scriptMutex);
        std::erase_if(holds, [](const HeldPlace& place) { return place.gate->isOpen(); });
        std::vector<HeldPlace> places;
        for (const auto& place : holds) {
            if (place.match(request)) {
                places.push_back(place);
            }
        }
        return places;
    }

    const ServerOptions options;
    CertificateAuthority authority;
    std::vector<std::unique_ptr<HostingService>> services;
    GzipCache gzipCache;

    std::mutex scriptMutex;  // guards what follows
    Table<Match, Responder> scripts;
    Table<Match, Fault> faults;
    Table<ConnectionStage, RawAnswer> disturbances;
    std::vector<HeldPlace> holds;

    mutable std::mutex recordMutex;  // guards what follows
    mutable std::condition_variable arrived;
    std::deque<Request> recorded;
    std::size_t received = 0;
    std::size_t forgotten = 0;

    std::uint16_t httpPort = 0;
    std::uint16_t httpsPort = 0;
    std::unique_ptr<Network> network;  // last: it calls into all the others
};

Server::Server(ServerOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {
    impl_->network =
        std::make_unique<Network>(*impl_, impl_->options.httpPort, impl_->options.httpsPort,
                                  impl_->authority.makeLeaf(Leaf::Valid), impl_->options.threads);
    impl_->httpPort = impl_->network->httpPort();
    impl_->httpsPort = impl_->network->httpsPort();
}

Server::~Server() {
    stop();
}

void Server::stop() {
    impl_->network.reset();
}

std::uint16_t Server::httpPort() const {
    return impl_->httpPort;
}

std::uint16_t Server::httpsPort() const {
    return impl_->httpsPort;
}

std::string Server::httpURL() const {
    return "http://localhost:" + std::to_string(impl_->httpPort);
}

std::string Server::httpsURL() const {
    return "https://localhost:" + std::to_string(impl_->httpsPort);
}

const std::filesystem::path& Server::caFile() const {
    return impl_->authority.file();
}

const Accounts& Server::accounts() const {
    return impl_->options.accounts;
}

const std::vector<OAuthApplication>& Server::applications() const {
    return impl_->options.applications;
}

void Server::presentCertificate(Leaf kind) {
    impl_->network->present(impl_->authority.makeLeaf(kind));
}

void Server::script(Match match, Reply reply, std::size_t times) {
    script(std::move(match), [reply = std::move(reply)](const Request&) { return reply; }, times);
}

void Server::script(Match match, Responder responder, std::size_t times) {
    const std::lock_guard lock(impl_->scriptMutex);
    impl_->scripts.add(std::move(match), std::move(responder), times);
}

void Server::fault(Match match, Fault fault, std::size_t times) {
    const std::lock_guard lock(impl_->scriptMutex);
    impl_->faults.add(std::move(match), std::move(fault), times);
}

void Server::disturb(ConnectionStage stage, RawAnswer steps, std::size_t times) {
    const std::lock_guard lock(impl_->scriptMutex);
    impl_->disturbances.add(stage, std::move(steps.keepAlive(false)), times);
}

void Server::clearScripts() {
    const std::lock_guard lock(impl_->scriptMutex);
    impl_->scripts.clear();
    impl_->faults.clear();
    impl_->disturbances.clear();
    impl_->holds.clear();
}

Hold Server::hold(Match match, HoldStage stage) {
    auto gate = std::make_shared<Gate>();
    const std::lock_guard lock(impl_->scriptMutex);
    impl_->holds.push_back({std::move(match), stage, gate});
    return Hold(std::move(gate));
}

std::vector<Request> Server::requests() const {
    return requests({});
}

std::vector<Request> Server::requests(const Match& match) const {
    const std::lock_guard lock(impl_->recordMutex);
    std::vector<Request> matching;
    for (const auto& request : impl_->recorded) {
        if (match(request)) {
            matching.push_back(request);
        }
    }
    return matching;
}

std::size_t Server::requestCount() const {
    const std::lock_guard lock(impl_->recordMutex);
    return impl_->received - impl_->forgotten;
}

void Server::forgetRequests() {
    const std::lock_guard lock(impl_->recordMutex);
    impl_->recorded.clear();
    impl_->forgotten = impl_->received;
}

bool Server::waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(impl_->recordMutex);
    return impl_->arrived.wait_for(lock, timeout,
                                   [&] { return impl_->received - impl_->forgotten >= count; });
}

std::uint64_t Server::acceptedConnections() const {
    return impl_->network ? impl_->network->acceptedConnections() : 0;
}

std::size_t Server::openConnections() const {
    return impl_->network ? impl_->network->openConnections() : 0;
}

bool Server::waitForOpenConnections(std::size_t atMost, std::chrono::milliseconds timeout) const {
    return !impl_->network || impl_->network->waitForOpenConnections(atMost, timeout);
}

void Server::closeIdleConnections() {
    if (impl_->network) {
        impl_->network->closeIdleConnections();
    }
}

}  // namespace emulator
