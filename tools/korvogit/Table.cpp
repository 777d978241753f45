#include "Table.h"

#include <algorithm>
#include <numeric>

#include "DisplayText.h"

namespace korvogit {

namespace {

constexpr std::string_view gap = "  ";
/// The last column keeps so many columns on a narrow terminal, whose lines then wrap.
constexpr std::size_t leastLastWidth = 12;

}  // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
    std::vector<Cell> titles;
    titles.reserve(columns_.size());
    for (const Column& column : columns_) titles.push_back({column.title, Style::Heading});
    rows_.push_back(std::move(titles));
}

void Table::addRow(std::vector<Cell> row) {
    for (Cell& cell : row) cell.text = cell.text.empty() ? "-" : displayText(cell.text);
    rows_.push_back(std::move(row));
}

std::string Table::text(const Terminal& terminal) const {
    const std::vector<std::size_t> columnWidths = widths(terminal);
    std::string text;
    for (const auto& row : rows_) text += line(row, columnWidths, terminal);
    return text;
}

std::vector<std::size_t> Table::widths(const Terminal& terminal) const {
    std::vector<std::size_t> widths(columns_.size(), 0);
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], displayWidth(row[i].text));
        }
    }
    if (terminal.width) {
        const std::size_t before =
            std::accumulate(widths.begin(), widths.end() - 1, gap.size() * (widths.size() - 1));
        const std::size_t rest = *terminal.width - std::min(*terminal.width, before);
        widths.back() = std::min(widths.back(), std::max(rest, leastLastWidth));
    }
    return widths;
}

std::string Table::line(const std::vector<Cell>& row, const std::vector<std::size_t>& widths,
                        const Terminal& terminal) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string shown = shortenedToWidth(row[i].text, widths[i]);
        const std::string padding(widths[i] - std::min(widths[i], displayWidth(shown)), ' ');
        const bool right = columns_[i].alignment == Alignment::Right;
        const bool last = i + 1 == row.size();
        if (right) line += padding;
        line += terminal.styled(shown, row[i].style);
        if (!right && !last) line += padding;
        if (!last) line += gap;
    }
    return line + "\n";
}

}  // namespace korvogit
