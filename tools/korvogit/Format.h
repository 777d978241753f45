#pragma once

#include <CLI/CLI.hpp>
#include <vector>

namespace korvogit {

enum class Format { Table, Json, Csv, JsonLines };

/// Adds "--format" with these choices; the first one is the default.
void addFormatOption(CLI::App& command, Format& format, const std::vector<Format>& choices);

}  // namespace korvogit
