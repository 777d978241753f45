#pragma once

#include <mutex>
#include <string>
#include <unordered_map>

#include "Message.h"
#include "RawAnswer.h"

namespace emulator {

/// The status line and header lines as they are sent, with the empty line after them.
std::string headBytes(const Answer& answer, const Request& request);
/// The body as it is sent: none for HEAD, 204 and 304.
std::string bodyBytes(const Answer& answer, const Request& request);
/// Whether the connection stands after this answer to this request.
bool staysOpen(const Answer& answer, const Request& request);
/// The bytes of an answer that follows the rules.
RawAnswer wireAnswer(const Answer& answer, const Request& request);

/// Compresses bodies, and remembers the last ones, since clients ask for the same pages again and
/// again and compressing one costs more than all the rest of an answer. Safe from any thread.
class GzipCache {
public:
    /// The answer with a gzip body, if it is compressible and the request accepts that.
    Answer encoded(Answer answer, const Request& request);

private:
    std::string compressed(const std::string& body);

    std::mutex mutex_;
    std::unordered_map<std::string, std::string> bodies_;  // by digest of the plain body
};

}  // namespace emulator
