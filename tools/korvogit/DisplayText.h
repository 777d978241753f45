// Text that came from a service, made fit for a terminal.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvogit {

/// The text with everything that could steer a terminal or reorder its line made visible: control
/// characters (ECMA-48, C0 and C1) and the bidirectional controls of Unicode as "\n" or "\u001b",
/// bytes that are not UTF-8 as U+FFFD.
std::string displayText(std::string_view text);

/// The same for JSON text, where each of these can stand inside a string only and is escaped there.
/// What JSON itself demands to be escaped must be so already.
std::string displayJSON(std::string_view json);

/// How many columns of a terminal a display text takes: two for a wide character, none for a
/// combining one.
std::size_t displayWidth(std::string_view displayText);

/// The longest beginning that fits into so many columns, with an ellipsis when something was left
/// out.
std::string shortenedToWidth(std::string_view displayText, std::size_t width);

}  // namespace korvogit
