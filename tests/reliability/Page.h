// docs/reliability.md as the tests read it.

#pragma once

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

/// The cells of a row: "| a | b |".
inline std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    for (auto begin = line.find("| "); begin != std::string::npos;) {
        const auto end = line.find(" |", begin + 1);
        if (end == std::string::npos) break;
        cells.push_back(end > begin + 2 ? line.substr(begin + 2, end - begin - 2) : "");
        begin = end + 1;
    }
    return cells;
}

/// The rows of the table below that heading, without its own head and the rows that divide it.
inline std::vector<std::vector<std::string>> tableOfPage(const std::string& heading) {
    std::ifstream page(DOCUMENTATION_DIR "/reliability.md");
    std::vector<std::vector<std::string>> rows;
    bool isBelow = false;
    int lines = 0;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("## ")) isBelow = line == "## " + heading;
        if (!isBelow || !line.starts_with("|")) continue;
        if (++lines > 2 && !line.starts_with("| **")) rows.push_back(cellsOf(line));
    }
    if (rows.empty()) throw std::runtime_error("there is no such table");
    return rows;
}
