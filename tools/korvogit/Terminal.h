#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvogit {

enum class Style { Plain, Heading, Good, Notable, Bad, Faint };

/// What an output stream can show.
struct Terminal {
    bool isTerminal = false;
    bool movesCursor = false;          ///< a line can be erased and written again
    bool colours = false;              ///< respects NO_COLOR
    std::optional<std::size_t> width;  ///< in columns; nothing when lines may be of any length

    static Terminal of(int descriptor);

    std::string styled(std::string_view text, Style style) const;
};

/// True when the locale's encoding can hold every character.
bool localeIsUnicode();

}  // namespace korvogit
