#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace emulator {

inline std::string joined(const std::vector<std::string>& words, std::string_view separator) {
    std::string text;
    for (const auto& word : words) {
        if (!text.empty()) text += separator;
        text += word;
    }
    return text;
}

}  // namespace emulator
