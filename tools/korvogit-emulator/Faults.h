#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Message.h"
#include "RawAnswer.h"

namespace emulator {

/// Makes of the answer that was due what is sent instead. The answer comes as it would be sent, so
/// with a compressed body when the client accepts that.
using Fault = std::function<RawAnswer(const Request&, const Answer&)>;

/// The faults that a client of a hosting service has to survive. "In the headers" means after the
/// status line and a part of the header lines, "in the body" after half of the bytes of the body.
namespace faults {

/// "fault-": the account octavia's token "fault-NAME" brings on the fault of that name.
inline const std::string tokenPrefix = "fault-";
/// The names of the faults below, for the program's options and for tokens.
const std::vector<std::string>& names();
/// The fault of that name with its usual measures; nothing when there is none.
std::optional<Fault> named(std::string_view name);

// Late.
Fault delayBeforeHeaders(std::chrono::milliseconds delay);  ///< delay-before-headers
Fault delayInBody(std::chrono::milliseconds delay);         ///< delay-in-body

// Gone or silent.
Fault resetAfterRequest();    ///< reset-after-request
Fault resetInHeaders();       ///< reset-in-headers
Fault resetInBody();          ///< reset-in-body
Fault closeAfterRequest();    ///< close-after-request: closed without a byte of an answer
Fault closeInHeaders();       ///< close-in-headers
Fault cutOffBody();           ///< cut-off-body: closed in good order before the said length
Fault cutOffChunks();         ///< cut-off-chunks: a chunked body without its last chunk
Fault silenceAfterRequest();  ///< silence-after-request
Fault silenceInHeaders();     ///< silence-in-headers
Fault silenceInBody();        ///< silence-in-body

// Wrong lengths.
Fault bodyLongerThanSaid();  ///< longer-body: 16 bytes more than Content-Length says
Fault lengthNoNumber();      ///< bad-length: Content-Length is no number
Fault twoLengths();          ///< two-lengths: two Content-Length lines that differ
Fault badChunkSize();        ///< bad-chunk-size: a size line that is no hexadecimal number
Fault hugeChunkSize();       ///< huge-chunk-size: a size beyond 64 bits

// Wrong codings.
Fault badGzip();        ///< bad-gzip: the middle of the compressed bytes is damaged
Fault noGzip();         ///< no-gzip: says gzip, but the body is plain
Fault truncatedGzip();  ///< truncated-gzip: complete by its length, half a stream
Fault gzipBombBody(std::size_t mebibytes);  ///< gzip-bomb: 1 GiB of blanks
Fault brotliBody();                         ///< brotli: a correct brotli body, asked for or not
Fault deflateBody();                        ///< deflate: a correct deflate body, asked for or not
Fault unknownCoding();                      ///< unknown-coding: Content-Encoding: x-nobody-knows

// Wrong heads.
Fault endlessHeaders();                ///< endless-headers: header lines until the client goes
Fault manyHeaders(std::size_t lines);  ///< many-headers: 100,000 lines, then the answer
Fault longHeader(std::size_t bytes);   ///< long-header: one line of 1 MiB
Fault garbageStatusLine();             ///< garbage-status
Fault http09();                        ///< http09: a body without status line and headers
Fault interimAnswers();                ///< interim: 100, 103 with fields, then the answer
Fault endlessInterimAnswers();         ///< endless-interim: 100 until the client goes
Fault noContentType();                 ///< no-content-type
Fault setCookie();                     ///< set-cookie: "emulator=1", for all paths

// Redirects. A request that was redirected once gets its answer (`redirectOnce`).
Fault redirectOnce(unsigned status);  ///< redirect-301, -302, -303, -307, -308
Fault redirectLoop();                 ///< redirect-loop: to itself for ever
Fault redirectTo(unsigned status, std::string location);
Fault redirectToHttp();           ///< redirect-to-http: the same target by http
Fault redirectToOtherHost();      ///< redirect-to-host: other.example.com
Fault redirectToFile();           ///< redirect-to-file: file:///etc/passwd
Fault redirectWithoutLocation();  ///< redirect-without-location

}  // namespace faults

}  // namespace emulator
