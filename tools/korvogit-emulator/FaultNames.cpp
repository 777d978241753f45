#include <algorithm>
#include <utility>

#include "Faults.h"

namespace emulator::faults {

namespace {

using namespace std::chrono_literals;

const std::vector<std::pair<std::string, Fault>>& table() {
    static const std::vector<std::pair<std::string, Fault>> faults{
        {"delay-before-headers", delayBeforeHeaders(2s)},
        {"delay-in-body", delayInBody(2s)},
        {"reset-after-request", resetAfterRequest()},
        {"reset-in-headers", resetInHeaders()},
        {"reset-in-body", resetInBody()},
        {"close-after-request", closeAfterRequest()},
        {"close-in-headers", closeInHeaders()},
        {"cut-off-body", cutOffBody()},
        {"cut-off-chunks", cutOffChunks()},
        {"silence-after-request", silenceAfterRequest()},
        {"silence-in-headers", silenceInHeaders()},
        {"silence-in-body", silenceInBody()},
        {"longer-body", bodyLongerThanSaid()},
        {"bad-length", lengthNoNumber()},
        {"two-lengths", twoLengths()},
        {"bad-chunk-size", badChunkSize()},
        {"huge-chunk-size", hugeChunkSize()},
        {"bad-gzip", badGzip()},
        {"no-gzip", noGzip()},
        {"truncated-gzip", truncatedGzip()},
        {"gzip-bomb", gzipBombBody(1024)},
        {"brotli", brotliBody()},
        {"deflate", deflateBody()},
        {"unknown-coding", unknownCoding()},
        {"endless-headers", endlessHeaders()},
        {"many-headers", manyHeaders(100'000)},
        {"long-header", longHeader(1 << 20)},
        {"garbage-status", garbageStatusLine()},
        {"http09", http09()},
        {"interim", interimAnswers()},
        {"endless-interim", endlessInterimAnswers()},
        {"no-content-type", noContentType()},
        {"set-cookie", setCookie()},
        {"redirect-301", redirectOnce(301)},
        {"redirect-302", redirectOnce(302)},
        {"redirect-303", redirectOnce(303)},
        {"redirect-307", redirectOnce(307)},
        {"redirect-308", redirectOnce(308)},
        {"redirect-loop", redirectLoop()},
        {"redirect-to-http", redirectToHttp()},
        {"redirect-to-host", redirectToOtherHost()},
        {"redirect-to-file", redirectToFile()},
        {"redirect-without-location", redirectWithoutLocation()},
    };
    return faults;
}

}  // namespace

const std::vector<std::string>& names() {
    static const auto all = [] {
        std::vector<std::string> result;
        for (const auto& [name, fault] : table()) {
            result.push_back(name);
        }
        return result;
    }();
    return all;
}

std::optional<Fault> named(std::string_view name) {
    const auto found = std::ranges::find(
        table(), name, [](const auto& entry) -> std::string_view { return entry.first; });
    return found == table().end() ? std::nullopt : std::optional(found->second);
}

}  // namespace emulator::faults
