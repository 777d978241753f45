#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace emulator {

/// One gzip member (RFC 1952).
std::string gzip(std::string_view text);
/// What a gzip member holds; throws std::runtime_error when it is damaged or cut short.
std::string gunzip(std::string_view bytes);
/// A zlib stream (RFC 1950), what HTTP calls "deflate".
std::string zlibDeflate(std::string_view text);
/// A brotli stream (RFC 7932).
std::string brotli(std::string_view text);
/// One valid gzip member of about a thousandth of the size of what comes out: so many MiB of
/// blanks.
std::string gzipBomb(std::size_t mebibytes);

/// True when an Accept-Encoding value accepts gzip (RFC 9110, 12.5.3), by name or by "*".
bool acceptsGzip(std::string_view acceptEncoding);

}  // namespace emulator
