// Encoded bodies. The input's first line is "Content-Encoding", a second one how many bytes the
// decoded body may have; the rest is the body.

#include "support/session/ContentDecoder.h"

#include <brotli/decode.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>

#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"

namespace {

namespace plain = fuzz::plain;
using fuzz::require;
using rkt::DecodingProblem;

/// What other decoding makes of a body.
struct Decoded {
    std::string text;       // no longer than one byte more than wanted
    bool complete = false;  // and as its checksum says
};

/// @param windowBits  says the format, as zlib's inflateInit2 has it
/// @param repeats  whether what follows the end is another member
Decoded inflated(std::string_view body, int windowBits, bool repeats, std::size_t wanted) {
    Decoded decoded;
    decoded.text.resize(wanted + 1);
    z_stream stream = {};
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(body.data()));
    stream.avail_in = static_cast<uInt>(body.size());
    stream.next_out = reinterpret_cast<Bytef*>(decoded.text.data());
    stream.avail_out = static_cast<uInt>(decoded.text.size());
    require(inflateInit2(&stream, windowBits) == Z_OK, "zlib works");
    int result = inflate(&stream, Z_FINISH);
    while (repeats && result == Z_STREAM_END && stream.avail_in > 0) {
        inflateReset(&stream);
        result = inflate(&stream, Z_FINISH);
    }
    decoded.complete = result == Z_STREAM_END;
    decoded.text.resize(decoded.text.size() - stream.avail_out);
    inflateEnd(&stream);
    return decoded;
}

Decoded unbrotlied(std::string_view body, std::size_t wanted) {
    Decoded decoded;
    decoded.text.resize(wanted + 1);
    std::size_t room = decoded.text.size();
    std::size_t left = body.size();
    const auto* next = reinterpret_cast<const std::uint8_t*>(body.data());
    auto* place = reinterpret_cast<std::uint8_t*>(decoded.text.data());
    auto* const decoder = BrotliDecoderCreateInstance(nullptr, nullptr, nullptr);
    const auto result =
        BrotliDecoderDecompressStream(decoder, &left, &next, &room, &place, nullptr);
    BrotliDecoderDestroyInstance(decoder);
    decoded.complete = result == BROTLI_DECODER_RESULT_SUCCESS && left == 0;
    decoded.text.resize(decoded.text.size() - room);
    return decoded;
}

/// As strict as the formats' descriptions; the library may take more, but not read it otherwise.
Decoded decodedOtherwise(std::string_view encoding, std::string_view body, std::size_t limit) {
    if (encoding == "br") return unbrotlied(body, limit);
    if (encoding != "deflate") return inflated(body, 15 + 16, true, limit);
    auto decoded = inflated(body, 15, false, limit);
    const bool isZlib = decoded.complete || decoded.text.size() > limit;
    return isZlib ? decoded : inflated(body, -15, false, limit);
}

void checkAgreement(const Decoded& expected, const std::string& body,
                    const std::optional<DecodingProblem>& problem, std::size_t limit) {
    if (expected.text.size() > limit) {
        require(problem.has_value(), "the limit holds");
    } else if (expected.complete) {
        require(!problem, "what is complete and short enough is read");
        require(body == expected.text, "as it is meant");
    }
}

}  // namespace

FUZZ_TARGET(ContentDecoder) {
    const auto encoding = plain::lowered(fuzz::takeLine(input));
    const auto limit = static_cast<std::size_t>(
        std::clamp(plain::integerIn(fuzz::takeLine(input)), 0LL, 100'000LL));
    std::string body(input);
    const auto problem = rkt::decodeContent(body, encoding, limit);
    if (input.empty()) {
        require(!problem && body.empty(), "nothing needs no decoding");
    } else if (encoding == "gzip" || encoding == "x-gzip" || encoding == "deflate" ||
               encoding == "br") {
        checkAgreement(decodedOtherwise(encoding, input, limit), body, problem, limit);
        require(problem || body.size() <= limit, "nothing is longer than the limit");
        require(problem != DecodingProblem::UnknownEncoding, "a known encoding");
    } else if (encoding.empty() || encoding == "identity") {
        require(!problem && body == input, "without encoding nothing changes");
    }
}
