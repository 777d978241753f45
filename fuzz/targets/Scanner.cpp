// The scanner. The input's first line says what to scan, a letter each; the rest is the text.

#include "KorvoGitService/RKTScanner.h"

#include <algorithm>
#include <array>

#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"

namespace {

namespace plain = fuzz::plain;

constexpr std::array<std::string_view, 6> literals = {"<", "rel=", "\"", ",", "aA", "=>"};

struct PlainScanner {
    std::string_view rest;

    bool scan(std::string_view literal) {
        const auto text = plain::withoutLeadingSpace(rest);
        const bool found =
            plain::lowered(text.substr(0, literal.size())) == plain::lowered(literal);
        if (found) rest = text.substr(literal.size());
        return found;
    }

    std::optional<std::string_view> scanUpTo(std::string_view stop) {
        const auto text = plain::withoutLeadingSpace(rest);
        const auto taken = text.substr(0, plain::lowered(text).find(plain::lowered(stop)));
        if (taken.empty()) return std::nullopt;
        rest = text.substr(taken.size());
        return taken;
    }
};

}  // namespace

FUZZ_TARGET(Scanner) {
    const auto orders = fuzz::takeLine(input).substr(0, 100);
    RKTScanner scanner(input);
    PlainScanner expected{input};
    for (const char order : orders) {
        const auto& literal = literals[static_cast<unsigned char>(order) % literals.size()];
        if ((order & 0x20) != 0) {
            fuzz::require(scanner.scanString(literal) == expected.scan(literal), "a literal");
        } else {
            fuzz::require(scanner.scanUpToString(literal) == expected.scanUpTo(literal),
                          "the text up to a literal");
        }
        fuzz::require(scanner.isAtEnd() == plain::withoutLeadingSpace(expected.rest).empty(),
                      "the end");
    }
}
