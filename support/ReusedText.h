// The room of a large text, used again by the next one.

#ifndef KORVOGITSERVICE_SUPPORT_REUSEDTEXT_H
#define KORVOGITSERVICE_SUPPORT_REUSEDTEXT_H

#include <cstddef>
#include <string>

namespace rkt {

/// Getting the pages of a fresh text from the system, and clearing them, costs as much for a page
/// of repositories as inflating it. So a few texts that were given back are kept.

/// A text, with whatever it contains, that has room for so much: a kept one if there is one that
/// does not have much more.
std::string takeReusedText(std::size_t size);

/// @param text  is not needed any more, and holds no secret
void giveReusedText(std::string text) noexcept;

}  // namespace rkt

#endif
