#include "support/curl/AnswerReader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include "support/ASCII.h"
#include "support/Text.h"

namespace rkt {
namespace {

// Room that is reserved on the word of "Content-Length" alone.
constexpr std::size_t maximumReserve = std::size_t{1} << 20;

// What services' header fields come to, and little enough for an allocator's quickest way.
constexpr std::size_t usualHeaderBytes = 1000;

std::string_view withoutLineEnd(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    return line;
}

// Of "HTTP/1.1 200 OK" or "HTTP/2 200" (RFC 9112 section 4), 0 for anything else. libcurl looks no
// further than "HTTP/": what goes on in another way is an answer of 200 to it.
int statusIn(std::string_view line) {
    constexpr std::string_view protocol = "HTTP/";
    const auto blank = std::min(line.find(' '), line.size());
    if (!line.starts_with(protocol)) return 0;
    const auto version = line.substr(protocol.size(), blank - protocol.size());
    const bool isVersion = (version.size() == 1 || (version.size() == 3 && version[1] == '.')) &&
                           isASCIIDigit(version.front()) && isASCIIDigit(version.back());
    const auto rest = withoutOuterBlanks(line.substr(blank));
    const auto status = rest.substr(0, rest.find(' '));
    const bool isStatus =
        status.size() == 3 && std::ranges::all_of(status, isASCIIDigit) && status.front() != '0';
    return isVersion && isStatus ? static_cast<int>(integerFromText(status)) : 0;
}

bool isLength(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && isASCIIDigit(text.front());
}

}  // namespace

bool AnswerReader::refuse(Refusal reason) {
    refusal_ = reason;
    return false;
}

bool AnswerReader::takeHeaderLine(std::string_view line) noexcept {
    headerBytes_ += line.size();
    if (headerBytes_ > maximumHeaderBytes) return refuse(Refusal::HeadersTooLong);
    try {
        return read(withoutLineEnd(line));
    } catch (const std::exception&) {
        return refuse(Refusal::NoMemory);
    }
}

bool AnswerReader::read(std::string_view line) {
    switch (place_) {
        case Place::StatusLine:
            headers_.clear();
            headers_.reserve(usualHeaderBytes);
            status_ = statusIn(line);
            if (status_ == 0) return refuse(Refusal::NoStatusLine);
            place_ = Place::Headers;
            break;
        case Place::Headers:
            if (line.empty()) {
                place_ = status_ / 100 == 1 ? Place::StatusLine : Place::AfterHeaders;
                if (!isLengthClear()) return refuse(Refusal::UnclearLength);
            } else {
                readField(line);
            }
            break;
        case Place::AfterHeaders:  // a trailer
            break;
    }
    return true;
}

// libcurl believes the last of several lengths, the first in a list, and digits at the beginning
// whatever follows them. A length that leaves open where the body ends (RFC 9112 section 6.3) could
// let a part of it pass for the whole.
bool AnswerReader::isLengthClear() const {
    std::optional<std::string_view> length;
    bool isClear = true;
    headers_.visitAll([&](std::string_view name, std::string_view value) {
        if (!equalIgnoringCase(name, "Content-Length")) return;
        for (auto rest = value; !rest.empty();) {
            const auto piece = rest.substr(0, rest.find(','));
            rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
            const auto number = withoutOuterBlanks(piece);
            isClear = isClear && isLength(number) && length.value_or(number) == number;
            length = number;
        }
    });
    return isClear;
}

void AnswerReader::readField(std::string_view line) {
    if (line.find('\r') != std::string_view::npos) {
        std::string blanked(line);
        std::ranges::replace(blanked, '\r', ' ');  // what it means there (RFC 9112 section 2.2)
        return readField(blanked);
    }
    const bool continues = line.front() == ' ' || line.front() == '\t';
    if (continues && !headers_.isEmpty()) {
        headers_.extendLastValue(withoutOuterBlanks(line));  // RFC 9112 section 5.2
    } else if (const auto colon = line.find(':'); colon != std::string_view::npos) {
        headers_.add(line.substr(0, colon), withoutOuterBlanks(line.substr(colon + 1)));
    }
}

bool AnswerReader::takeBody(std::string_view bytes, long long expected) noexcept {
    if (bytes.size() > maximumBodySize_ - body_.size()) return refuse(Refusal::BodyTooLong);
    try {
        if (body_.empty() && expected > 0) {
            body_.reserve(
                std::min({static_cast<std::size_t>(expected), maximumBodySize_, maximumReserve}));
        }
        body_.append(bytes);
    } catch (const std::exception&) {
        return refuse(Refusal::NoMemory);
    }
    return true;
}

}  // namespace rkt
