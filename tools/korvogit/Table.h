#pragma once

#include <string>
#include <vector>

#include "Terminal.h"

namespace korvogit {

/// Text in aligned columns, one line a row. On a terminal the last column is shortened to what
/// fits.
class Table {
public:
    enum class Alignment { Left, Right };
    struct Column {
        std::string title;
        Alignment alignment = Alignment::Left;
    };
    struct Cell {
        std::string text;  ///< may hold anything; empty is shown as "-"
        Style style = Style::Plain;
    };

    explicit Table(std::vector<Column> columns);
    /// One cell for each column.
    void addRow(std::vector<Cell> row);
    std::string text(const Terminal& terminal) const;

private:
    std::vector<std::size_t> widths(const Terminal& terminal) const;
    std::string line(const std::vector<Cell>& row, const std::vector<std::size_t>& widths,
                     const Terminal& terminal) const;

    std::vector<Column> columns_;
    std::vector<std::vector<Cell>> rows_;  // the first one holds the titles; all are display texts
};

}  // namespace korvogit
