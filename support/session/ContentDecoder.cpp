#include "support/session/ContentDecoder.h"

#include <brotli/decode.h>
#include <libdeflate.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <ranges>
#include <utility>
#include <vector>

#include "support/ASCII.h"
#include "support/JSONReading.h"
#include "support/ReusedText.h"

namespace rkt {

const char* const acceptedEncodings = "gzip, deflate, br";

namespace {

using Problem = std::optional<DecodingProblem>;

libdeflate_decompressor* decompressor() {
    struct Free {
        void operator()(libdeflate_decompressor* object) const {
            libdeflate_free_decompressor(object);
        }
    };
    thread_local const std::unique_ptr<libdeflate_decompressor, Free> instance(
        libdeflate_alloc_decompressor());
    return instance.get();
}

enum class Format { Gzip, Zlib, Raw };

libdeflate_result inflate(Format format, std::string_view input, char* output, std::size_t room,
                          std::size_t& consumed, std::size_t& produced) {
    const auto function = format == Format::Gzip   ? libdeflate_gzip_decompress_ex
                          : format == Format::Zlib ? libdeflate_zlib_decompress_ex
                                                   : libdeflate_deflate_decompress_ex;
    return function(decompressor(), input.data(), input.size(), output, room, &consumed, &produced);
}

// A growing output. Its room at most doubles when it is used up, so all growing together costs no
// more than the final size, however many members a body has.
class Output {
public:
    /// @param expected  what it may come to, which is most often JSON
    Output(std::size_t expected, std::size_t maximumSize)
        : maximumSize_(maximumSize),
          bytes_(takeReusedText(std::min(expected, maximumSize) + roomBehindJSON)) {
        bytes_.resize(std::min(std::max(expected, smallest), maximumSize));
    }

    char* place() { return bytes_.data() + used_; }
    std::size_t room() const { return bytes_.size() - used_; }
    /// False when there can be no more room.
    bool grow() {
        if (bytes_.size() >= maximumSize_) return false;
        bytes_.resize(bytes_.size() < maximumSize_ / 2 ? bytes_.size() * 2 : maximumSize_);
        return true;
    }
    void use(std::size_t size) { used_ += size; }
    std::string take() {
        bytes_.resize(used_);
        return std::move(bytes_);
    }

private:
    static constexpr std::size_t smallest = 4096;
    const std::size_t maximumSize_;
    std::string bytes_;
    std::size_t used_ = 0;
};

// What a body may come to. A gzip body's last four bytes promise a size (RFC 1952 section 2.3.1);
// as they may lie, they count only up to what deflate can make of the body at best (1032 to 1).
std::size_t expectedSize(Format format, std::string_view body) {
    constexpr std::size_t bestRatio = 1032;
    if (format != Format::Gzip || body.size() < 4) return body.size() * 4;
    std::size_t promised = 0;
    for (const char byte : std::views::reverse(body.substr(body.size() - 4))) {
        promised = promised << 8 | static_cast<unsigned char>(byte);
    }
    return promised / bestRatio <= body.size() ? promised : body.size() * 4;
}

// Inflates what stands at the start of `input`.
Problem inflateMember(Format format, std::string_view input, Output& output,
                      std::size_t& consumed) {
    for (;;) {
        std::size_t produced = 0;
        const auto result =
            inflate(format, input, output.place(), output.room(), consumed, produced);
        if (result == LIBDEFLATE_SUCCESS) {
            output.use(produced);
            return std::nullopt;
        }
        if (result != LIBDEFLATE_INSUFFICIENT_SPACE) return DecodingProblem::Damaged;
        if (!output.grow()) return DecodingProblem::TooLarge;
    }
}

Problem inflateGzip(std::string& body, std::size_t maximumSize) {
    Output output(expectedSize(Format::Gzip, body), maximumSize);
    std::string_view rest = body;
    do {  // RFC 1952 section 2.2: members follow one another
        std::size_t consumed = 0;
        if (const auto problem = inflateMember(Format::Gzip, rest, output, consumed)) {
            return problem;
        }
        rest.remove_prefix(consumed);
    } while (!rest.empty());
    body = output.take();
    return std::nullopt;
}

// "deflate" means the zlib format (RFC 9110 section 8.4.1.2), but some servers send the bare data.
Problem inflateDeflate(std::string& body, std::size_t maximumSize) {
    Output output(expectedSize(Format::Zlib, body), maximumSize);
    std::size_t consumed = 0;
    auto problem = inflateMember(Format::Zlib, body, output, consumed);
    if (problem == DecodingProblem::Damaged) {
        problem = inflateMember(Format::Raw, body, output, consumed);
    }
    if (problem) return problem;
    body = output.take();
    return std::nullopt;
}

Problem decodeBrotli(std::string& body, std::size_t maximumSize) {
    struct Destroy {
        void operator()(BrotliDecoderState* state) const { BrotliDecoderDestroyInstance(state); }
    };
    const std::unique_ptr<BrotliDecoderState, Destroy> decoder(
        BrotliDecoderCreateInstance(nullptr, nullptr, nullptr));
    if (!decoder) return DecodingProblem::Damaged;
    std::string output;
    auto* next = reinterpret_cast<const std::uint8_t*>(body.data());
    auto available = body.size();
    for (;;) {
        std::size_t none = 0;
        const auto result = BrotliDecoderDecompressStream(decoder.get(), &available, &next, &none,
                                                          nullptr, nullptr);
        std::size_t size = 0;
        const auto* piece =
            reinterpret_cast<const char*>(BrotliDecoderTakeOutput(decoder.get(), &size));
        if (size > maximumSize - output.size()) return DecodingProblem::TooLarge;
        if (size > 0) output.append(piece, size);
        if (result == BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT) continue;
        if (result != BROTLI_DECODER_RESULT_SUCCESS || available > 0)
            return DecodingProblem::Damaged;
        if (BrotliDecoderHasMoreOutput(decoder.get()) == BROTLI_FALSE) break;
    }
    body = std::move(output);
    return std::nullopt;
}

Problem decodeOne(std::string& body, std::string_view encoding, std::size_t maximumSize) {
    if (encoding.empty() || equalIgnoringCase(encoding, "identity")) return std::nullopt;
    if (equalIgnoringCase(encoding, "gzip") || equalIgnoringCase(encoding, "x-gzip")) {
        return inflateGzip(body, maximumSize);
    }
    if (equalIgnoringCase(encoding, "deflate")) return inflateDeflate(body, maximumSize);
    if (equalIgnoringCase(encoding, "br")) return decodeBrotli(body, maximumSize);
    return DecodingProblem::UnknownEncoding;
}

}  // namespace

namespace {

Problem decodeAll(std::string& body, std::string_view contentEncoding, std::size_t maximumSize) {
    constexpr int maximumEncodings = 8;  // each costs up to maximumSize; nobody uses even two
    for (int count = 0; !contentEncoding.empty();
         ++count) {  // the last one applied is undone first
        if (count == maximumEncodings) return DecodingProblem::UnknownEncoding;
        const auto comma = contentEncoding.rfind(',');
        const bool more = comma != std::string_view::npos;
        const auto last = more ? contentEncoding.substr(comma + 1) : contentEncoding;
        if (const auto problem = decodeOne(body, withoutOuterBlanks(last), maximumSize)) {
            return problem;
        }
        contentEncoding = more ? contentEncoding.substr(0, comma) : std::string_view();
    }
    return std::nullopt;
}

}  // namespace

std::optional<DecodingProblem> decodeContent(std::string& body, std::string_view contentEncoding,
                                             std::size_t maximumSize) {
    if (body.empty()) return std::nullopt;  // an answer without content may still name an encoding
    try {
        return decodeAll(body, contentEncoding, maximumSize);
    } catch (const std::exception&) {  // no memory for as much as the limit allows
        return DecodingProblem::TooLarge;
    }
}

}  // namespace rkt
