#include "tests/reliability/Faults.h"

#include <KorvoGitService/KorvoGitServiceErrors.h>

#include "tests/reliability/Interposed.h"
#include "tests/reliability/Operations.h"

namespace {

namespace faults = emulator::faults;
using emulator::ConnectionStage;
using emulator::Fault;
using emulator::Leaf;
using emulator::RawAnswer;
using Proxy = emulator::ForwardProxy::Behaviour;
using E = RKTError;

std::string text(const char* domain, std::int64_t code) {
    return std::string(domain) + " " + std::to_string(code);
}

// The rows below are made by these.

FaultRow row(std::string fault, std::function<void(Scene&)> bring, RKTError::URLCode code) {
    const auto outcome = text(RKTError::NSURLErrorDomain, code);
    return {std::move(fault), std::move(bring), outcome, outcome};
}

std::function<void(Scene&)> spoilt(Fault fault) {
    return [fault = std::move(fault)](Scene& scene) { scene.server.fault({}, fault); };
}

std::function<void(Scene&)> shown(Leaf leaf) {
    return [leaf](Scene& scene) { scene.server.presentCertificate(leaf); };
}

std::function<void(Scene&)> disturbed(ConnectionStage stage, RawAnswer steps) {
    return [=](Scene& scene) { scene.server.disturb(stage, steps); };
}

std::function<void(Scene&)> proxied(Proxy behaviour) {
    return [behaviour](Scene& scene) {
        scene.proxy.setBehaviour(behaviour);
        scene.goThroughProxy(scene.proxy.port());
    };
}

/// With the time-out shortened.
std::function<void(Scene&)> silent(std::function<void(Scene&)> bring) {
    return [bring = std::move(bring)](Scene& scene) {
        scene.loseHeartSoon();
        bring(scene);
    };
}

FaultRow harmless(std::string fault, Fault spoiling) {
    return {std::move(fault), spoilt(std::move(spoiling)), "success", "success"};
}

Fault raw(std::string bytes) {
    return [bytes = std::move(bytes)](const auto&, const auto&) {
        return RawAnswer().send(bytes).close();
    };
}

/// Ends without TLS's own end, where only that could tell that nothing is missing.
Fault cutOffWithoutLength() {
    return [](const emulator::Request&, const emulator::Answer& answer) {
        return RawAnswer()
            .send("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n" +
                  answer.body.substr(0, 20))
            .cutOff();
    };
}

void redirectToOtherHost(Scene& scene) {
    scene.server.fault(
        {.also = [](const emulator::Request& request) { return request.host() != "gitlab.com"; }},
        [](const emulator::Request& request, const emulator::Answer& answer) {
            const auto location = "https://gitlab.com" + request.target;
            return faults::redirectTo(302, location)(request, answer);
        });
}

std::vector<FaultRow> connecting() {
    const auto goThroughGateway = [](Scene& scene) {
        scene.connectTo("127.0.0.1", scene.gateway.port());
    };
    const auto atSilentGateway = [=](Scene& scene) {
        scene.gateway.beSilent();
        goThroughGateway(scene);
    };
    const auto unknownName = [](Scene& scene) {
        Names::set(Scene::unknownHost, {});
        scene.connectTo(Scene::unknownHost, scene.server.httpsPort());
    };
    const auto silentName = [](Scene& scene) {
        Names::silence(Scene::silentHost);
        scene.connectTo(Scene::silentHost, scene.server.httpsPort());
    };
    return {
        row("Name not found", unknownName, E::NSURLErrorCannotFindHost),
        row("Silence while the name is looked up", silent(silentName), E::NSURLErrorTimedOut),
        row("Connection refused", goThroughGateway, E::NSURLErrorCannotConnectToHost),
        row("Silence while connecting", silent(atSilentGateway), E::NSURLErrorTimedOut),
        row("Reset as soon as connected", disturbed(ConnectionStage::Accepted, RawAnswer().reset()),
            E::NSURLErrorSecureConnectionFailed),
    };
}

std::vector<FaultRow> securing() {
    return {
        row("Reset in the TLS handshake",
            disturbed(ConnectionStage::ClientHello, RawAnswer().reset()),
            E::NSURLErrorSecureConnectionFailed),
        row("Closed in the TLS handshake",
            disturbed(ConnectionStage::ClientHello, RawAnswer().close()),
            E::NSURLErrorSecureConnectionFailed),
        row("Something else than TLS",
            disturbed(ConnectionStage::ClientHello, RawAnswer().send("220 mail ready\r\n").close()),
            E::NSURLErrorSecureConnectionFailed),
        row("Silence in the TLS handshake",
            silent(disturbed(ConnectionStage::ClientHello, RawAnswer().silence())),
            E::NSURLErrorTimedOut),
        row("Certificate expired", shown(Leaf::Expired), E::NSURLErrorServerCertificateHasBadDate),
        row("Certificate not valid yet", shown(Leaf::NotYetValid),
            E::NSURLErrorServerCertificateNotYetValid),
        row("Certificate of another name", shown(Leaf::WrongName),
            E::NSURLErrorServerCertificateUntrusted),
        row("Certificate signed by itself", shown(Leaf::SelfSigned),
            E::NSURLErrorServerCertificateUntrusted),
        row("Certificate of an unknown authority", shown(Leaf::OtherAuthority),
            E::NSURLErrorServerCertificateHasUnknownRoot),
    };
}

std::vector<FaultRow> proxies() {
    const auto goThroughGateway = [](Scene& scene) { scene.goThroughProxy(scene.gateway.port()); };
    return {
        row("Proxy that nobody runs", goThroughGateway, E::NSURLErrorCannotConnectToHost),
        row("Proxy that refuses", proxied(Proxy::Forbid), E::NSURLErrorCannotConnectToHost),
        row("Proxy that wants a password", proxied(Proxy::Authenticate),
            E::NSURLErrorCannotConnectToHost),
        row("Proxy that resets", proxied(Proxy::Reset), E::NSURLErrorNetworkConnectionLost),
        row("Proxy that is silent", silent(proxied(Proxy::Silent)), E::NSURLErrorTimedOut),
    };
}

std::vector<FaultRow> breakingOff() {
    return {
        row("Reset after the request", spoilt(faults::resetAfterRequest()),
            E::NSURLErrorNetworkConnectionLost),
        row("Reset in the headers", spoilt(faults::resetInHeaders()),
            E::NSURLErrorNetworkConnectionLost),
        row("Reset in the body", spoilt(faults::resetInBody()), E::NSURLErrorNetworkConnectionLost),
        row("Closed after the request", spoilt(faults::closeAfterRequest()),
            E::NSURLErrorNetworkConnectionLost),
        row("Closed in the headers", spoilt(faults::closeInHeaders()),
            E::NSURLErrorNetworkConnectionLost),
        row("Body shorter than said", spoilt(faults::cutOffBody()),
            E::NSURLErrorNetworkConnectionLost),
        {"Body without length, cut off", spoilt(cutOffWithoutLength()),
         text(RKTError::NSCocoaErrorDomain, RKTError::NSPropertyListReadCorruptError),
         text(RKTError::NSCocoaErrorDomain, RKTError::NSPropertyListReadCorruptError)},
        row("Chunks without the last one", spoilt(faults::cutOffChunks()),
            E::NSURLErrorNetworkConnectionLost),
        row("Silence after the request", silent(spoilt(faults::silenceAfterRequest())),
            E::NSURLErrorTimedOut),
        row("Silence in the headers", silent(spoilt(faults::silenceInHeaders())),
            E::NSURLErrorTimedOut),
        row("Silence in the body", silent(spoilt(faults::silenceInBody())), E::NSURLErrorTimedOut),
    };
}

std::vector<FaultRow> heads() {
    return {
        row("Garbage for a status line", spoilt(faults::garbageStatusLine()),
            E::NSURLErrorBadServerResponse),
        row("HTTP/0.9", spoilt(faults::http09()), E::NSURLErrorBadServerResponse),
        row("Change of protocol", spoilt(raw("HTTP/1.1 101 Go\r\nUpgrade: x\r\n\r\nabc")),
            E::NSURLErrorBadServerResponse),
        harmless("Interim answers", faults::interimAnswers()),
        row("Interim answers without end", spoilt(faults::endlessInterimAnswers()),
            E::NSURLErrorBadServerResponse),
        row("100,000 header lines", spoilt(faults::manyHeaders(100'000)),
            E::NSURLErrorBadServerResponse),
        row("Header lines without end", spoilt(faults::endlessHeaders()),
            E::NSURLErrorBadServerResponse),
        row("Header line of 1 MiB", spoilt(faults::longHeader(1U << 20)),
            E::NSURLErrorBadServerResponse),
        row("Length that is no number", spoilt(faults::lengthNoNumber()),
            E::NSURLErrorBadServerResponse),
        row("Length that begins like a number",
            spoilt(raw("HTTP/1.1 200 OK\r\nContent-Length: 2x\r\n\r\n[]")),
            E::NSURLErrorBadServerResponse),
        row("Length beyond 63 bits",
            spoilt(raw("HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775808\r\n\r\n[]")),
            E::NSURLErrorBadServerResponse),
        row("Two lengths that differ", spoilt(faults::twoLengths()),
            E::NSURLErrorBadServerResponse),
    };
}

std::vector<FaultRow> bodies() {
    const auto bomb = [](Scene& scene) { scene.server.fault({}, faults::gzipBombBody(1024)); };
    return {
        harmless("Body longer than said", faults::bodyLongerThanSaid()),
        row("Chunk size that is no number", spoilt(faults::badChunkSize()),
            E::NSURLErrorBadServerResponse),
        row("Chunk size beyond 64 bits", spoilt(faults::hugeChunkSize()),
            E::NSURLErrorBadServerResponse),
        row("Damaged gzip", spoilt(faults::badGzip()), E::NSURLErrorCannotDecodeRawData),
        row("Gzip that is none", spoilt(faults::noGzip()), E::NSURLErrorCannotDecodeRawData),
        row("Truncated gzip", spoilt(faults::truncatedGzip()), E::NSURLErrorCannotDecodeRawData),
        row("Gzip that swells to 1 GiB", bomb, E::NSURLErrorDataLengthExceedsMaximum),
        row("Unknown coding", spoilt(faults::unknownCoding()),
            E::NSURLErrorCannotDecodeContentData),
    };
}

std::vector<FaultRow> redirects() {
    return {
        row("Redirect in a loop", spoilt(faults::redirectLoop()),
            E::NSURLErrorHTTPTooManyRedirects),
        row("Redirect from https to http", spoilt(faults::redirectToHttp()),
            E::NSURLErrorBadServerResponse),
        {"Redirect to another host", redirectToOtherHost, "success", "success"},
        row("Redirect to a file", spoilt(faults::redirectToFile()), E::NSURLErrorUnsupportedURL),
        row("Redirect to no address", spoilt(faults::redirectTo(302, "https://[::1")),
            E::NSURLErrorBadServerResponse),
        {"Redirect without Location", spoilt(faults::redirectWithoutLocation()),
         text(RKTKorvoGitServiceErrorDomain, 302),
         text(RKTKorvoGitServiceErrorDomain, RKTServiceErrorOAuth2InvalidResponse)},
    };
}

}  // namespace

Scene::Scene() {
    answerEverybody(server);
}

void Scene::share() const {
    RKTNetworkSettings::setShared(settings);
}

void Scene::loseHeartSoon() {
    settings.timeoutIntervalForRequest = std::chrono::milliseconds(500);
    share();
}

void Scene::connectTo(const std::string& host, std::uint16_t port) {
    for (auto& mapping : settings.hostMappings) {
        mapping.address = host;
        mapping.addressPort = port;
    }
    share();
}

void Scene::goThroughProxy(std::uint16_t port, const std::string& scheme) {
    for (const auto& mapping : settings.hostMappings) {
        proxy.route(mapping.host + ":443", server.httpsPort());
    }
    settings.hostMappings.clear();
    settings.proxy = scheme + "://127.0.0.1:" + std::to_string(port);
    share();
}

void Scene::mend() {
    server.clearScripts();
    answerEverybody(server);
    server.presentCertificate(Leaf::Valid);
    proxy.setBehaviour(Proxy::Forward);
    gateway.leadTo(settings.proxy ? proxy.port() : server.httpsPort());
    for (const char* name : {unknownHost, silentHost}) Names::set(name, {"127.0.0.1"});
}

const std::vector<FaultRow>& faultRows() {
    static const auto rows = [] {
        std::vector<FaultRow> all;
        for (const auto part :
             {connecting, securing, proxies, breakingOff, heads, bodies, redirects}) {
            for (auto& one : part()) all.push_back(std::move(one));
        }
        return all;
    }();
    return rows;
}
