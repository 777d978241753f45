#include "tests/helpers/Loading.h"

#include <latch>

RKTNetworkSettings settingsFor(const emulator::Server& server) {
    RKTNetworkSettings settings;
    settings.certificateAuthorityFile = server.caFile().string();
    for (const char* host :
         {"api.github.com", "github.com", "gitlab.com", "api.bitbucket.org", "bitbucket.org"}) {
        settings.hostMappings.push_back({host, 443, "127.0.0.1", server.httpsPort()});
    }
    return settings;
}

RKTURLRequest requestTo(const std::string& url) {
    return RKTURLRequest(RKTURL::URLWithString(url));
}

void drain(RKTOperationQueue& queue) {
    std::latch done(1);
    queue.addOperation([&] { done.count_down(); });
    done.wait();
}

std::shared_ptr<RKTURLSession> Origin::session(
    std::shared_ptr<RKTURLSessionDelegate> delegate) const {
    return RKTURLSession::sessionWithConfiguration({settings}, std::move(delegate));
}

std::shared_ptr<RKTURLSessionDataTask> Origin::task(
    RKTURLSession& session, const RKTURLRequest& request,
    const std::shared_ptr<Awaited<Loaded>>& loaded) {
    return session.dataTaskWithRequest(request, [loaded](auto data, auto response, auto error) {
        loaded->put({std::move(data), std::move(response), std::move(error)});
    });
}

Loaded Origin::load(const RKTURLRequest& request) const {
    const auto loaded = std::make_shared<Awaited<Loaded>>();
    const auto session = this->session();
    task(*session, request, loaded)->resume();
    return loaded->first();
}
