#include "Compression.h"

#include <brotli/encode.h>
#include <zlib.h>

#include <stdexcept>
#include <vector>

#include "Message.h"

namespace emulator {

namespace {

constexpr int gzipFormat = MAX_WBITS + 16;
constexpr int zlibFormat = MAX_WBITS;
constexpr int bareFormat = -MAX_WBITS;

std::string deflated(std::string_view text, int format, int flush) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, format, 8, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        throw std::runtime_error("zlib: no stream");
    }
    std::string result(deflateBound(&stream, static_cast<uLong>(text.size())) + 16, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    deflate(&stream, flush);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    return result;
}

std::string littleEndian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((value >> shift) & 0xFF);
    }
    return bytes;
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == text.npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// True for "q=0", "q=0.0" and the like.
bool refusedByWeight(std::string_view parameter) {
    parameter = trimmed(parameter);
    return parameter.size() > 2 && equalIgnoringCase(parameter.substr(0, 2), "q=") &&
           parameter.find_first_not_of("0.", 2) == parameter.npos;
}

}  // namespace

std::string gzip(std::string_view text) {
    return deflated(text, gzipFormat, Z_FINISH);
}

std::string gunzip(std::string_view bytes) {
    z_stream stream{};
    if (inflateInit2(&stream, gzipFormat) != Z_OK) {
        throw std::runtime_error("zlib: no stream");
    }
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    std::string result;
    std::vector<char> piece(65536);
    int outcome = Z_OK;
    while (outcome == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = static_cast<uInt>(piece.size());
        outcome = inflate(&stream, Z_NO_FLUSH);
        result.append(piece.data(), piece.size() - stream.avail_out);
    }
    inflateEnd(&stream);
    if (outcome != Z_STREAM_END) {
        throw std::runtime_error("zlib: no complete gzip member");
    }
    return result;
}

std::string zlibDeflate(std::string_view text) {
    return deflated(text, zlibFormat, Z_FINISH);
}

std::string brotli(std::string_view text) {
    std::size_t size = BrotliEncoderMaxCompressedSize(text.size()) + 16;
    std::vector<std::uint8_t> bytes(size);
    if (BrotliEncoderCompress(5, BROTLI_DEFAULT_WINDOW, BROTLI_DEFAULT_MODE, text.size(),
                              reinterpret_cast<const std::uint8_t*>(text.data()), &size,
                              bytes.data()) == BROTLI_FALSE) {
        throw std::runtime_error("brotli: not compressed");
    }
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

std::string gzipBomb(std::size_t mebibytes) {
    const std::string blanks(1 << 20, ' ');
    // A full flush ends at a byte's edge and refers to nothing before it, so the piece repeats.
    const std::string piece = deflated(blanks, bareFormat, Z_FULL_FLUSH);
    std::string bomb("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03", 10);
    uLong sum = crc32(0, nullptr, 0);
    const uLong sumOfOne =
        crc32(sum, reinterpret_cast<const Bytef*>(blanks.data()), static_cast<uInt>(blanks.size()));
    for (std::size_t i = 0; i < mebibytes; ++i) {
        bomb += piece;
        sum = crc32_combine(sum, sumOfOne, static_cast<z_off_t>(blanks.size()));
    }
    const std::string emptyFinalBlock("\x03\x00", 2);
    return bomb + emptyFinalBlock + littleEndian(static_cast<std::uint32_t>(sum)) +
           littleEndian(static_cast<std::uint32_t>(mebibytes << 20));
}

bool acceptsGzip(std::string_view acceptEncoding) {
    bool accepted = false;
    while (!acceptEncoding.empty()) {
        const auto piece = acceptEncoding.substr(0, acceptEncoding.find(','));
        acceptEncoding.remove_prefix(std::min(acceptEncoding.size(), piece.size() + 1));
        const auto semicolon = piece.find(';');
        const auto coding = trimmed(piece.substr(0, semicolon));
        const bool refused =
            semicolon != piece.npos && refusedByWeight(piece.substr(semicolon + 1));
        if (equalIgnoringCase(coding, "gzip")) {
            return !refused;
        }
        accepted = accepted || (coding == "*" && !refused);
    }
    return accepted;
}

}  // namespace emulator
