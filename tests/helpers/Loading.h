// Sessions against the emulator.

#pragma once

#include <KorvoGitService/RKTURLSession.h>

#include <memory>
#include <optional>
#include <string>

#include "tests/helpers/Awaited.h"
#include "tools/korvogit-emulator/Emulator.h"

/// What a task's handler received.
struct Loaded {
    std::optional<std::string> data;
    std::shared_ptr<const RKTHTTPURLResponse> response;
    std::optional<RKTError> error;

    int status() const { return response ? response->statusCode() : 0; }
    std::int64_t code() const { return error ? error->code() : 0; }
};

/// Network settings under which the public services' hosts are the emulator's.
RKTNetworkSettings settingsFor(const emulator::Server& server);

RKTURLRequest requestTo(const std::string& url);

/// An operation queue's operations are serial, so one that is added now runs after all that were
/// added before: waits for it.
void drain(RKTOperationQueue& queue);

/// One emulator and sessions that reach it.
class Origin {
public:
    Origin() = default;
    explicit Origin(emulator::ServerOptions options) : server(std::move(options)) {}

    emulator::Server server;
    RKTNetworkSettings settings = settingsFor(server);

    std::shared_ptr<RKTURLSession> session(
        std::shared_ptr<RKTURLSessionDelegate> delegate = nullptr) const;
    /// The emulator's own address and `path`, by https.
    std::string url(const std::string& path) const { return server.httpsURL() + path; }
    std::string httpURL(const std::string& path) const { return server.httpURL() + path; }

    /// A task that puts what it receives into `loaded`.
    static std::shared_ptr<RKTURLSessionDataTask> task(
        RKTURLSession& session, const RKTURLRequest& request,
        const std::shared_ptr<Awaited<Loaded>>& loaded);
    /// Loads to the end.
    Loaded load(const RKTURLRequest& request) const;
    Loaded load(const std::string& url) const { return load(requestTo(url)); }
};
