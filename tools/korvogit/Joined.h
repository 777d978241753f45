#pragma once

#include <string>
#include <vector>

namespace korvogit {

/// With commas between.
inline std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const auto& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all;
}

}  // namespace korvogit
