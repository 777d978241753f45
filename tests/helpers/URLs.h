#pragma once

#include <KorvoGitService/RKTURL.h>

#include <string_view>

/// For a text that must be one.
inline RKTURL URL(std::string_view text) {
    return RKTURL::URLWithString(text).value();
}
