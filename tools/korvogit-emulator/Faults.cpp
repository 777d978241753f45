#include "Faults.h"

#include <array>
#include <utility>

#include "Compression.h"
#include "Wire.h"

namespace emulator::faults {

namespace {

using namespace std::chrono_literals;

/// The head up to the middle of its header lines, so within "Name: val".
std::string partOfHead(const Answer& answer, const Request& request) {
    const auto head = headBytes(answer, request);
    return head.substr(0, head.find("\r\n") + (head.size() - head.find("\r\n")) / 2);
}

std::string firstHalf(const std::string& text) {
    return text.substr(0, text.size() / 2);
}

std::string secondHalf(const std::string& text) {
    return text.substr(text.size() / 2);
}

RawAnswer upToHalfBody(const Answer& answer, const Request& request) {
    return RawAnswer().send(headBytes(answer, request) + firstHalf(bodyBytes(answer, request)));
}

/// The same answer with its body in two chunks, but `spoil` gets to change the second chunk's
/// bytes.
Fault chunked(std::function<std::string(const std::string& chunk)> spoil) {
    return [spoil = std::move(spoil)](const Request& request, Answer answer) {
        answer.headers.set("Transfer-Encoding", "chunked");
        const auto body = std::exchange(answer.body, {});
        const auto chunk = [](const std::string& bytes) {
            constexpr std::string_view digits = "0123456789abcdef";
            std::string size;
            for (std::size_t n = bytes.size(); n > 0; n /= 16) {
                size.insert(0, 1, digits[n % 16]);
            }
            return bytes.empty() ? std::string() : size + "\r\n" + bytes + "\r\n";
        };
        return RawAnswer()
            .send(headBytes(answer, request) + chunk(firstHalf(body)) +
                  spoil(chunk(secondHalf(body))))
            .close();
    };
}

/// The same answer with other bytes as body, said to be in that coding.
Fault coded(std::string coding, std::function<std::string(const std::string& body)> encode) {
    return [coding = std::move(coding), encode = std::move(encode)](const Request& request,
                                                                    Answer answer) {
        const bool isCoded = answer.headers.get("Content-Encoding").has_value();
        answer.body = encode(isCoded ? gunzip(answer.body) : answer.body);
        answer.headers.set("Content-Encoding", coding);
        return wireAnswer(answer, request);
    };
}

Fault withHeaders(Headers headers) {
    return [headers = std::move(headers)](const Request& request, Answer answer) {
        for (const auto& [name, value] : headers) {
            answer.headers.set(name, value);
        }
        return wireAnswer(answer, request);
    };
}

/// Bytes before the answer. The head is cut after its status line where they belong there.
RawAnswer afterStatusLine(const Answer& answer, const Request& request, RawAnswer::Send lines) {
    const auto head = headBytes(answer, request);
    const auto statusLine = head.find("\r\n") + 2;
    return RawAnswer()
        .send(head.substr(0, statusLine))
        .then(std::move(lines))
        .send(head.substr(statusLine) + bodyBytes(answer, request))
        .keepAlive(staysOpen(answer, request));
}

Answer redirectAnswer(unsigned status, const std::string& location) {
    Answer answer = textAnswer(status, "");
    answer.headers.add("Location", location);
    return answer;
}

constexpr std::string_view redirectedMark = "redirected=1";

std::string withMark(const Request& request) {
    return request.path + "?" + request.query + (request.query.empty() ? "" : "&") +
           std::string(redirectedMark);
}

}  // namespace

Fault delayBeforeHeaders(std::chrono::milliseconds delay) {
    return [delay](const Request& request, const Answer& answer) {
        return wireAnswer(answer, request).prepend(RawAnswer().pause(delay));
    };
}

Fault delayInBody(std::chrono::milliseconds delay) {
    return [delay](const Request& request, const Answer& answer) {
        return upToHalfBody(answer, request)
            .pause(delay)
            .send(secondHalf(bodyBytes(answer, request)))
            .keepAlive(staysOpen(answer, request));
    };
}

Fault resetAfterRequest() {
    return [](const Request&, const Answer&) { return RawAnswer().reset(); };
}

Fault resetInHeaders() {
    return [](const Request& request, const Answer& answer) {
        return RawAnswer().send(partOfHead(answer, request)).reset();
    };
}

Fault resetInBody() {
    return [](const Request& request, const Answer& answer) {
        return upToHalfBody(answer, request).reset();
    };
}

Fault closeAfterRequest() {
    return [](const Request&, const Answer&) { return RawAnswer().close(); };
}

Fault closeInHeaders() {
    return [](const Request& request, const Answer& answer) {
        return RawAnswer().send(partOfHead(answer, request)).close();
    };
}

Fault cutOffBody() {
    return [](const Request& request, const Answer& answer) {
        return upToHalfBody(answer, request).close();
    };
}

Fault cutOffChunks() {
    return chunked([](const std::string& chunk) { return chunk; });
}

Fault silenceAfterRequest() {
    return [](const Request&, const Answer&) { return RawAnswer().silence(); };
}

Fault silenceInHeaders() {
    return [](const Request& request, const Answer& answer) {
        return RawAnswer().send(partOfHead(answer, request)).silence();
    };
}

Fault silenceInBody() {
    return [](const Request& request, const Answer& answer) {
        return upToHalfBody(answer, request).silence();
    };
}

Fault bodyLongerThanSaid() {
    return [](const Request& request, const Answer& answer) {
        return RawAnswer()
            .send(headBytes(answer, request) + bodyBytes(answer, request) + std::string(16, '!'))
            .close();
    };
}

Fault lengthNoNumber() {
    return withHeaders({{"Content-Length", "many"}});
}

Fault twoLengths() {
    return [](const Request& request, Answer answer) {
        answer.headers.add("Content-Length", std::to_string(answer.body.size()));
        answer.headers.add("Content-Length", std::to_string(answer.body.size() / 2));
        return wireAnswer(answer, request);
    };
}

Fault badChunkSize() {
    return chunked([](const std::string& chunk) { return "zz" + chunk + "0\r\n\r\n"; });
}

Fault hugeChunkSize() {
    return chunked([](const std::string& chunk) {
        return "ffffffffffffffffff" + chunk.substr(std::min(chunk.find("\r\n"), chunk.size())) +
               "\r\n";
    });
}

Fault badGzip() {
    return coded("gzip", [](const std::string& body) {
        auto bytes = gzip(body);
        const auto middle = bytes.size() / 2;
        bytes.replace(middle, 8, std::string(8, '\xff'));
        return bytes;
    });
}

Fault noGzip() {
    return coded("gzip", [](const std::string& body) { return body; });
}

Fault truncatedGzip() {
    return coded("gzip", [](const std::string& body) { return firstHalf(gzip(body)); });
}

Fault gzipBombBody(std::size_t mebibytes) {
    return coded("gzip", [mebibytes](const std::string&) { return gzipBomb(mebibytes); });
}

Fault brotliBody() {
    return coded("br", [](const std::string& body) { return brotli(body); });
}

Fault deflateBody() {
    return coded("deflate", [](const std::string& body) { return zlibDeflate(body); });
}

Fault unknownCoding() {
    return coded("x-nobody-knows", [](const std::string& body) { return body; });
}

Fault endlessHeaders() {
    return [](const Request& request, const Answer& answer) {
        return afterStatusLine(answer, request, {"X-Endless: on and on\r\n", RawAnswer::endless});
    };
}

Fault manyHeaders(std::size_t lines) {
    return [lines](const Request& request, const Answer& answer) {
        return afterStatusLine(answer, request, {"X-Many: a\r\n", lines});
    };
}

Fault longHeader(std::size_t bytes) {
    return withHeaders({{"X-Long", std::string(bytes, 'x')}});
}

Fault garbageStatusLine() {
    return [](const Request& request, const Answer& answer) {
        const auto head = headBytes(answer, request);
        return RawAnswer()
            .send("\x01 this is no status line \xff" + head.substr(head.find("\r\n")) +
                  bodyBytes(answer, request))
            .close();
    };
}

Fault http09() {
    return [](const Request& request, const Answer& answer) {
        return RawAnswer().send(bodyBytes(answer, request)).close();
    };
}

Fault interimAnswers() {
    return [](const Request& request, const Answer& answer) {
        return wireAnswer(answer, request)
            .prepend(
                RawAnswer().send("HTTP/1.1 100 Continue\r\n\r\n"
                                 "HTTP/1.1 103 Early Hints\r\n"
                                 "Link: <https://interim.example.com/?page=9>; rel=\"last\"\r\n"
                                 "X-Interim: yes\r\n\r\n"));
    };
}

Fault endlessInterimAnswers() {
    return [](const Request&, const Answer&) {
        return RawAnswer().send("HTTP/1.1 100 Continue\r\n\r\n", RawAnswer::endless);
    };
}

Fault noContentType() {
    return [](const Request& request, Answer answer) {
        answer.headers.remove("Content-Type");
        return wireAnswer(answer, request);
    };
}

Fault setCookie() {
    return withHeaders({{"Set-Cookie", "emulator=1; Path=/"}});
}

Fault redirectOnce(unsigned status) {
    return [status](const Request& request, const Answer& answer) {
        const bool redirected = request.query.ends_with(redirectedMark);
        return wireAnswer(redirected ? answer : redirectAnswer(status, withMark(request)), request);
    };
}

Fault redirectLoop() {
    return [](const Request& request, const Answer&) {
        return wireAnswer(redirectAnswer(302, request.target), request);
    };
}

Fault redirectTo(unsigned status, std::string location) {
    return [status, location = std::move(location)](const Request& request, const Answer&) {
        return wireAnswer(redirectAnswer(status, location), request);
    };
}

Fault redirectToHttp() {
    return [](const Request& request, const Answer&) {
        return wireAnswer(redirectAnswer(302, "http://" + request.authority + request.target),
                          request);
    };
}

Fault redirectToOtherHost() {
    return [](const Request& request, const Answer&) {
        const std::string scheme = request.tls ? "https" : "http";
        return wireAnswer(redirectAnswer(302, scheme + "://other.example.com" + request.target),
                          request);
    };
}

Fault redirectToFile() {
    return redirectTo(302, "file:///etc/passwd");
}

Fault redirectWithoutLocation() {
    return [](const Request& request, const Answer&) {
        return wireAnswer(textAnswer(302, ""), request);
    };
}

}  // namespace emulator::faults
