// An answer as libcurl shows it, line by line and piece by piece.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "support/session/HeaderBlock.h"

namespace rkt {

/// All header lines of an answer together, interim answers' and trailers included. More than any
/// service sends and far less than what could hurt. libcurl has a limit for one line and, in newer
/// versions, for all; neither can be set.
constexpr std::size_t maximumHeaderBytes = std::size_t{256} << 10;

/// Collects the final answer's status, header fields and body. libcurl shows the lines of every
/// answer: those of interim ones (1xx) come first, those of trailers after the body, and only the
/// place tells what a line is: a trailer may be called "HTTP/…", too.
///
/// Both operations throw nothing; false refuses the rest of the answer.
class AnswerReader {
public:
    explicit AnswerReader(std::size_t maximumBodySize) : maximumBodySize_(maximumBodySize) {}

    enum class Refusal { None, NoStatusLine, HeadersTooLong, UnclearLength, BodyTooLong, NoMemory };

    bool takeHeaderLine(std::string_view line) noexcept;
    /// @param expected  the length of the whole body as announced; not positive when it was not
    bool takeBody(std::string_view bytes, long long expected) noexcept;

    Refusal refusal() const { return refusal_; }
    /// 0 until the final answer's headers have arrived to their end.
    int status() const { return place_ == Place::AfterHeaders ? status_ : 0; }
    /// True for an answer that changes to another protocol, which nobody asked for.
    bool switchesProtocols() const { return status_ == 101; }

    /// Of all header lines so far.
    std::size_t headerBytes() const { return headerBytes_; }

    HeaderBlock takeHeaders() { return std::move(headers_); }
    std::string takeBody() { return std::move(body_); }

private:
    enum class Place { StatusLine, Headers, AfterHeaders };

    bool read(std::string_view line);
    void readField(std::string_view line);
    bool isLengthClear() const;
    bool refuse(Refusal reason);

    const std::size_t maximumBodySize_;
    Place place_ = Place::StatusLine;
    int status_ = 0;
    std::size_t headerBytes_ = 0;
    HeaderBlock headers_;
    std::string body_;
    Refusal refusal_ = Refusal::None;
};

}  // namespace rkt
