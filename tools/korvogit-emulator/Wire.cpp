#include "Wire.h"

#include "Compression.h"
#include "Dates.h"
#include "Digest.h"

namespace emulator {

namespace {

constexpr std::size_t worthCompressing = 1024;
constexpr std::size_t maximalCachedBodies = 512;

bool hasNoBody(const Answer& answer, const Request& request) {
    return request.method == "HEAD" || answer.status == 204 || answer.status == 304 ||
           answer.status / 100 == 1;
}

bool hasNoLength(const Answer& answer) {
    return answer.status == 204 || answer.status == 304 || answer.status / 100 == 1 ||
           answer.headers.get("Content-Length") || answer.headers.get("Transfer-Encoding");
}

void addLine(std::string& bytes, std::string_view name, std::string_view value) {
    bytes.append(name).append(": ").append(value).append("\r\n");
}

}  // namespace

bool staysOpen(const Answer& answer, const Request& request) {
    return answer.keepAlive && request.keepAlive;
}

std::string headBytes(const Answer& answer, const Request& request) {
    std::string bytes = "HTTP/1.1 " + std::to_string(answer.status) + " ";
    bytes += answer.reason.empty() ? usualReason(answer.status) : answer.reason;
    bytes += "\r\n";
    if (!answer.headers.get("Date")) {
        addLine(bytes, "Date", httpDate(systemSeconds()));
    }
    for (const auto& [name, value] : answer.headers) {
        addLine(bytes, name, value);
    }
    if (!hasNoLength(answer)) {
        addLine(bytes, "Content-Length", std::to_string(answer.body.size()));
    }
    if (!answer.headers.get("Connection")) {
        if (!staysOpen(answer, request)) {
            addLine(bytes, "Connection", "close");
        } else if (request.http10) {
            addLine(bytes, "Connection", "keep-alive");
        }
    }
    return bytes + "\r\n";
}

std::string bodyBytes(const Answer& answer, const Request& request) {
    return hasNoBody(answer, request) ? std::string() : answer.body;
}

RawAnswer wireAnswer(const Answer& answer, const Request& request) {
    return RawAnswer()
        .send(headBytes(answer, request) + bodyBytes(answer, request))
        .keepAlive(staysOpen(answer, request));
}

Answer GzipCache::encoded(Answer answer, const Request& request) {
    if (!answer.compressible || answer.body.size() < worthCompressing ||
        answer.headers.get("Content-Encoding") ||
        !acceptsGzip(request.headers.get("Accept-Encoding").value_or(""))) {
        return answer;
    }
    answer.body = compressed(answer.body);
    answer.headers.add("Content-Encoding", "gzip");
    return answer;
}

std::string GzipCache::compressed(const std::string& body) {
    const auto key = sha256(body);
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = bodies_.find(key); found != bodies_.end()) {
            return found->second;
        }
    }
    auto result = gzip(body);
    const std::lock_guard lock(mutex_);
    if (bodies_.size() >= maximalCachedBodies) {
        bodies_.clear();
    }
    return bodies_.insert_or_assign(key, std::move(result)).first->second;
}

}  // namespace emulator
