// Reading a text from left to right.

#ifndef KORVOGITSERVICE_RKTSCANNER_H
#define KORVOGITSERVICE_RKTSCANNER_H

#include <cstddef>
#include <optional>
#include <string_view>

#include "KorvoGitService/RKTExport.h"

/// A place in a UTF-8 text that the caller keeps alive. White space and line ends (Unicode's, the
/// no-break ones included) are skipped before every scan; a scan that fails leaves the place
/// unchanged.
class RKT_EXPORT RKTScanner {
public:
    /// `scannerWithString:`
    explicit RKTScanner(std::string_view text) : text_(text) {}

    /// True also when only skippable characters remain.
    bool isAtEnd() const;

    /// `scanString:intoString:`. Compared without regard to letter case; `literal` is ASCII.
    bool scanString(std::string_view literal);

    /// `scanUpToString:intoString:`. The text before `stop`, or up to the end when `stop` does not
    /// come; nothing when that text is empty. White space before `stop` belongs to the result.
    std::optional<std::string_view> scanUpToString(std::string_view stop);

private:
    std::size_t afterSkipped() const;

    std::string_view text_;
    std::size_t location_ = 0;
};

#endif
