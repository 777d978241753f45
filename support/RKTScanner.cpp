#include "KorvoGitService/RKTScanner.h"

#include <algorithm>
#include <array>

#include "support/ASCII.h"

namespace {

using namespace std::literals;

/// White space and line ends beside ASCII's, in UTF-8.
constexpr std::array skippable{
    "\u0085"sv, "\u00A0"sv, "\u1680"sv, "\u2000"sv, "\u2001"sv, "\u2002"sv, "\u2003"sv,
    "\u2004"sv, "\u2005"sv, "\u2006"sv, "\u2007"sv, "\u2008"sv, "\u2009"sv, "\u200A"sv,
    "\u200B"sv, "\u2028"sv, "\u2029"sv, "\u202F"sv, "\u205F"sv, "\u3000"sv,
};

/// How many bytes of white space `text` begins with, 0 or those of one character.
std::size_t skippablePrefix(std::string_view text) {
    if (text.empty()) return 0;
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return first == ' ' || (first >= '\t' && first <= '\r') ? 1 : 0;
    const auto found = std::ranges::find_if(
        skippable, [text](std::string_view character) { return text.starts_with(character); });
    return found == skippable.end() ? 0 : found->size();
}

bool equalLetters(char a, char b) {
    return rkt::asciiLower(a) == rkt::asciiLower(b);
}

}  // namespace

bool RKTScanner::isAtEnd() const {
    return afterSkipped() == text_.size();
}

bool RKTScanner::scanString(std::string_view literal) {
    const std::size_t start = afterSkipped();
    if (literal.empty() || !rkt::equalIgnoringCase(text_.substr(start, literal.size()), literal)) {
        return false;
    }
    location_ = start + literal.size();
    return true;
}

std::optional<std::string_view> RKTScanner::scanUpToString(std::string_view stop) {
    const std::size_t start = afterSkipped();
    const std::string_view rest = text_.substr(start);
    const auto found = std::ranges::search(rest, stop, equalLetters).begin();
    const auto length = static_cast<std::size_t>(found - rest.begin());
    if (length == 0) return std::nullopt;
    location_ = start + length;
    return rest.substr(0, length);
}

std::size_t RKTScanner::afterSkipped() const {
    std::size_t place = location_;
    while (const std::size_t length = skippablePrefix(text_.substr(place))) place += length;
    return place;
}
