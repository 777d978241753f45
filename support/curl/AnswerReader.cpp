#include "support/curl/AnswerReader.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "support/ASCII.h"
#include "support/Text.h"

namespace rkt {
namespace {

// Room that is reserved on the word of "Content-Length" alone.
constexpr std::size_t maximumReserve = std::size_t{1} << 20;

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
            status_ = statusIn(line);
            if (status_ == 0) return refuse(Refusal::NoStatusLine);
            place_ = Place::Headers;
            break;
        case Place::Headers:
            if (line.empty()) {
                place_ = status_ / 100 == 1 ? Place::StatusLine : Place::AfterHeaders;
                if (!lengthsAgree()) return refuse(Refusal::LengthsDiffer);
            } else {
                readField(line);
            }
            break;
        case Place::AfterHeaders:  // a trailer
            break;
    }
    return true;
}

// libcurl believes the last of several lengths, and the first in a list. Lengths that differ leave
// open where the body ends (RFC 9112 section 6.3), so that a part of it could pass for the whole.
bool AnswerReader::lengthsAgree() const {
    std::optional<std::string_view> length;
    for (const auto& [name, value] : headers_) {
        if (!equalIgnoringCase(name, "Content-Length")) continue;
        for (std::string_view rest = value; !rest.empty();) {
            const auto piece = rest.substr(0, rest.find(','));
            rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
            const auto number = withoutOuterBlanks(piece);
            if (length.value_or(number) != number) return false;
            length = number;
        }
    }
    return true;
}

void AnswerReader::readField(std::string_view text) {
    std::string line(text);
    std::ranges::replace(line, '\r', ' ');  // within a line it means a blank (RFC 9112 section 2.2)
    const bool continues = line.front() == ' ' || line.front() == '\t';
    if (continues && !headers_.empty()) {
        headers_.back().second.append(" ").append(
            withoutOuterBlanks(line));  // RFC 9112 section 5.2
    } else if (const auto colon = line.find(':'); colon != std::string::npos) {
        headers_.emplace_back(line.substr(0, colon),
                              withoutOuterBlanks(std::string_view(line).substr(colon + 1)));
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
