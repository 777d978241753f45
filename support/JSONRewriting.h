// The slow way through a JSON text, for what the fast parser refuses.

#ifndef KORVOGITSERVICE_SUPPORT_JSONREWRITING_H
#define KORVOGITSERVICE_SUPPORT_JSONREWRITING_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace rkt {

struct JSONRewriting {
    /// The same document with every integer beyond 64 bits as the nearest floating-point number.
    /// Nothing if the text is not JSON, nests deeper than jsonDepthLimit or has a number beyond the
    /// floating-point range.
    std::optional<std::string> text;
    /// Where the text stops being JSON; unknown for too deep nesting.
    std::optional<std::size_t> errorPosition;
};

/// @param text  without a byte-order mark
JSONRewriting rewriteJSON(std::string_view text);

}  // namespace rkt

#endif
