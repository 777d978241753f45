#include "support/curl/CurlTransfer.h"

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "KorvoGitService/RKTError.h"
#include "support/ASCII.h"
#include "support/curl/AuthorityFile.h"
#include "support/curl/CurlErrors.h"
#include "support/curl/CurlSessionMemory.h"
#include "support/curl/ProxyAccount.h"
#include "support/curl/TLSResumption.h"

namespace rkt {
namespace {

// libcurl drops a field "Name:" but sends "Name;" as a field without a value.
std::string headerLine(const RKTURLRequest::Header& header) {
    const bool empty = header.second.find_first_not_of(" \t") == std::string::npos;
    return empty ? header.first + ";" : header.first + ": " + header.second;
}

// An IPv6 address among colons.
std::string inBrackets(const std::string& host) {
    return host.find(':') != std::string::npos && !host.starts_with('[') ? "[" + host + "]" : host;
}

// The one that libcurl takes: the first that fits the host, which for libcurl has no zone.
const RKTNetworkSettings::HostMapping* mappingFor(const RequestTarget& target,
                                                  const RKTNetworkSettings& settings) {
    auto host = target.host;
    if (const auto zone = host.find('%'); zone != std::string::npos)
        host.replace(zone, host.npos, "]");
    const auto found = std::ranges::find_if(settings.hostMappings, [&](const auto& mapping) {
        return mapping.port == target.port && equalIgnoringCase(inBrackets(mapping.host), host);
    });
    return found == settings.hostMappings.end() ? nullptr : &*found;
}

// Without a scheme it is an HTTP proxy.
bool isSOCKSProxy(std::string_view proxyInLowerCase) {
    const auto scheme = proxyInLowerCase.substr(0, proxyInLowerCase.find("://"));
    return scheme.size() < proxyInLowerCase.size() && scheme.starts_with("socks");
}

// libcurl counts connections by the host that they are led to and the URL's port, and all that go
// to an HTTP proxy without a tunnel as the proxy's. It counts together what goes other ways there,
// and lets wait what would be too many; but whoever takes another way must not wait for the first
// connection of this one.
std::string peerOf(const Exchange& exchange, const std::optional<std::string>& authorityFile) {
    const auto& target = exchange.target;
    const auto& settings = *exchange.settings;
    const auto* mapping = mappingFor(target, settings);
    const auto proxy = asciiLowered(settings.proxy.value_or(""));
    const bool isOfProxy =
        !proxy.empty() && !isSOCKSProxy(proxy) && !mapping && target.scheme != "https";
    std::string peer;
    if (!isOfProxy) {
        peer = asciiLowered(mapping && !mapping->address.empty() ? mapping->address : target.host);
        if (mapping) peer.append(":").append(std::to_string(mapping->addressPort));
        peer.append(" ").append(std::to_string(target.port));
    }
    if (!proxy.empty()) peer.append(" through ").append(*settings.proxy);
    if (authorityFile) peer.append(" by ").append(*authorityFile);
    return peer;
}

std::optional<std::string> authorityFileOf(const RKTNetworkSettings& settings) {
    if (!settings.certificateAuthorityFile) return std::nullopt;
    return pathOfCurrentContent(*settings.certificateAuthorityFile);
}

// What may be sent twice with the effect of once (RFC 9110 section 9.2.2).
bool isIdempotent(const std::string& method) {
    return method != "POST" && method != "PATCH" && method != "CONNECT";
}

}  // namespace

CurlTransfer::CurlTransfer(Loader::Token token, Exchange exchange, Loader::Finished finished,
                           Admission& admission)
    : token_(token),
      exchange_(std::move(exchange)),
      memory_(std::dynamic_pointer_cast<CurlSessionMemory>(exchange_.memory)),
      authorityFile_(authorityFileOf(*exchange_.settings)),
      peer_(peerOf(exchange_, authorityFile_)),
      finished_(std::move(finished)),
      handle_(curl_easy_init()),
      admission_(admission),
      answer_(exchange_.settings->maximumBodySize) {
    configure();
}

template <class T>
void CurlTransfer::set(CURLoption option, T value) {
    const auto code = curl_easy_setopt(handle_.get(), option, value);
    if (problem_ == CURLE_OK) problem_ = code;
}

void CurlTransfer::append(HeaderList& list, const std::string& line) {
    if (auto* longer = curl_slist_append(list.get(), line.c_str())) {
        static_cast<void>(list.release());
        list.reset(longer);
    } else {
        problem_ = CURLE_OUT_OF_MEMORY;
    }
}

void CurlTransfer::configure() {
    if (!handle_) {
        problem_ = CURLE_OUT_OF_MEMORY;
        return;
    }
    set(CURLOPT_PRIVATE, static_cast<void*>(this));
    set(CURLOPT_ERRORBUFFER, errorText_);
    set(CURLOPT_NOSIGNAL, 1L);
    // A name look-up runs in a thread of its own; ending a transfer must not wait for it.
    set(CURLOPT_QUICK_EXIT, 1L);
    configureRequest();
    configureNetwork();
    configureReceiving();
}

void CurlTransfer::configureRequest() {
    set(CURLOPT_URL, exchange_.target.URLForLoading().c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_FOLLOWLOCATION, 0L);
    if (!exchange_.body.empty() || exchange_.method == "POST") {
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(exchange_.body.size()));
        set(CURLOPT_POSTFIELDS, exchange_.body.c_str());
    }
    if (exchange_.method == "HEAD") {
        set(CURLOPT_NOBODY, 1L);
    } else if (exchange_.method != "GET" || !exchange_.body.empty()) {
        set(CURLOPT_CUSTOMREQUEST, exchange_.method.c_str());
    }
    for (const auto& header : exchange_.headers) append(headerList_, headerLine(header));
    // Without a value: libcurl's own "Accept: */*", and "Expect" for large bodies, stay away.
    append(headerList_, "Accept:");
    append(headerList_, "Expect:");
    set(CURLOPT_HTTPHEADER, headerList_.get());
    if (memory_) {
        set(CURLOPT_SHARE, memory_->share());
        keepTLSSessionsResumable(handle_.get());
        set(CURLOPT_COOKIEFILE, "");  // turns cookies on, reads no file
    }
}

void CurlTransfer::configureNetwork() {
    const auto& settings = *exchange_.settings;
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    // When a connection that was used before ends without an answer, libcurl sends the request
    // again. The server may have acted on the first: a second use of an authorization code takes
    // back what it brought (RFC 6749 section 4.1.2). The new connection is closed afterwards: no
    // other such request may use it, and they would pile up.
    if (kind() == Admission::Kind::Alone) {
        set(CURLOPT_FRESH_CONNECT, 1L);
        set(CURLOPT_FORBID_REUSE, 1L);
    }
    if (settings.proxy && !isProxyAccountUsable(*settings.proxy)) {
        problem_ = CURLE_COULDNT_RESOLVE_PROXY;
        return;
    }
    // Empty rather than unset: unset lets libcurl look into the environment.
    set(CURLOPT_PROXY, settings.proxy ? settings.proxy->c_str() : "");
    set(CURLOPT_NOPROXY, "");
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    if (authorityFile_) {
        set(CURLOPT_CAINFO, authorityFile_->c_str());
        set(CURLOPT_PROXY_CAINFO, authorityFile_->c_str());
    }
    // A folder of authorities would be looked into anew for every connection; a file alone is read
    // once and kept.
    set(CURLOPT_CAPATH, nullptr);
    set(CURLOPT_PROXY_CAPATH, nullptr);
    for (const auto& mapping : settings.hostMappings) {
        if (mapping.host.empty()) continue;  // for libcurl that is every host
        append(connectTo_, inBrackets(mapping.host) + ":" + std::to_string(mapping.port) + ":" +
                               inBrackets(mapping.address) + ":" +
                               std::to_string(mapping.addressPort));
    }
    set(CURLOPT_CONNECT_TO, connectTo_.get());
    set(CURLOPT_PREREQFUNCTION, &CurlTransfer::onConnection);
    set(CURLOPT_PREREQDATA, this);
    // Time is kept by the loader. This is for a host with several addresses: libcurl gives each a
    // share of it before it tries the next.
    constexpr std::chrono::milliseconds longest = std::chrono::hours(24);
    set(CURLOPT_CONNECTTIMEOUT_MS,
        static_cast<long>(std::min(exchange_.idleTimeout, longest).count()));
}

void CurlTransfer::configureReceiving() {
    set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    set(CURLOPT_WRITEDATA, this);
}

Loader::Token CurlTransfer::tokenOf(CURL* handle) {
    char* transfer = nullptr;
    curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
    return reinterpret_cast<const CurlTransfer*>(transfer)->token_;
}

Admission::Kind CurlTransfer::kind() const {
    return isIdempotent(exchange_.method) ? Admission::Kind::Shares : Admission::Kind::Alone;
}

int CurlTransfer::onConnection(void* transfer, char* address, char*, int, int ownPort) {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    try {
        self.admission_.began(self.token_, {address, ownPort});
    } catch (const std::exception&) {
        return CURL_PREREQFUNC_ABORT;  // no memory
    }
    return CURL_PREREQFUNC_OK;
}

std::size_t CurlTransfer::onHeader(char* bytes, std::size_t size, std::size_t count,
                                   void* transfer) {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    self.touch();
    return self.answer_.takeHeaderLine({bytes, size * count}) ? size * count : 0;
}

std::size_t CurlTransfer::onBody(char* bytes, std::size_t size, std::size_t count, void* transfer) {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    self.touch();
    curl_off_t expected = 0;
    curl_easy_getinfo(self.handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &expected);
    return self.answer_.takeBody({bytes, size * count}, expected) ? size * count : 0;
}

// libcurl tells how many bytes of the body have gone, not when.
void CurlTransfer::look(TimePoint now) {
    curl_off_t sent = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_SIZE_UPLOAD_T, &sent);
    if (sent > sentOfBody_) lastByte_ = now;
    sentOfBody_ = sent;
}

// Bytes that only libcurl sees, of name resolution and handshakes, count at the end of each phase.
CurlTransfer::TimePoint CurlTransfer::deadline() const {
    auto last = lastByte_;
    for (const auto phase :
         {CURLINFO_NAMELOOKUP_TIME_T, CURLINFO_CONNECT_TIME_T, CURLINFO_APPCONNECT_TIME_T}) {
        curl_off_t microseconds = 0;
        curl_easy_getinfo(handle_.get(), phase, &microseconds);
        last = std::max(last, handedOver_ + std::chrono::microseconds(microseconds));
    }
    return std::min(last + exchange_.idleTimeout, exchange_.deadline);
}

CurlTransfer::TimePoint CurlTransfer::nextLook(TimePoint now) const {
    constexpr int looks = 8;
    constexpr std::chrono::milliseconds shortest(1);
    curl_off_t connected = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_PRETRANSFER_TIME_T, &connected);
    const bool isSent = sentOfBody_ == static_cast<curl_off_t>(exchange_.body.size());
    if (connected > 0 && isSent) return deadline();
    return std::min(deadline(), now + std::max(exchange_.idleTimeout / looks, shortest));
}

// What libcurl says of a proxy may hold the proxy's text, and that a password.
std::string CurlTransfer::underlyingText(CURLcode code) const {
    const auto& proxy = exchange_.settings->proxy;
    const bool tellsNothing = errorText_[0] == '\0' || (proxy && mayHoldProxyAccount(*proxy));
    return tellsNothing ? curl_easy_strerror(code) : errorText_;
}

// A transfer may also end well for libcurl without an answer that anybody could use: when the
// connection was closed within the headers, or when the server went over to another protocol.
std::optional<ExchangeResult::Failure> CurlTransfer::failure(CURLcode code) const {
    const auto because = [code](std::int64_t meaning, std::string text) {
        return ExchangeResult::Failure{meaning, code, std::move(text)};
    };
    switch (answer_.refusal()) {
        case AnswerReader::Refusal::NoStatusLine:
            return because(RKTError::NSURLErrorBadServerResponse, "the status line is none");
        case AnswerReader::Refusal::HeadersTooLong:
            return because(RKTError::NSURLErrorBadServerResponse, "the headers are too long");
        case AnswerReader::Refusal::UnclearLength:
            return because(RKTError::NSURLErrorBadServerResponse,
                           "the length is no number, or there are several");
        case AnswerReader::Refusal::BodyTooLong:
            return because(RKTError::NSURLErrorDataLengthExceedsMaximum, "the body is too long");
        case AnswerReader::Refusal::NoMemory:
            return because(RKTError::NSURLErrorDataLengthExceedsMaximum,
                           "there is no memory for it");
        case AnswerReader::Refusal::None:
            break;
    }
    if (code != CURLE_OK) {
        return because(transportErrorCode(code, handle_.get(), errorText_), underlyingText(code));
    }
    if (answer_.switchesProtocols()) {
        return because(RKTError::NSURLErrorBadServerResponse, "the server changed the protocol");
    }
    if (answer_.status() == 0) {
        return because(RKTError::NSURLErrorNetworkConnectionLost, "the headers are incomplete");
    }
    return std::nullopt;
}

ExchangeResult CurlTransfer::takeResult(CURLcode code) {
    if (memory_ && handle_) memory_->boundCookies(handle_.get(), answer_.headerBytes());
    ExchangeResult result;
    result.failure = failure(code);
    result.status = answer_.status();
    if (result.status != 0) result.headers = answer_.takeHeaders();
    if (!result.failure) result.body = answer_.takeBody();
    return result;
}

ExchangeResult CurlTransfer::takeTimeout() {
    return takeResult(CURLE_OPERATION_TIMEDOUT);
}

}  // namespace rkt
