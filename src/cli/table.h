#pragma once

#include "cli/console.h"

#include <string>
#include <vector>

namespace tidwen {

/// Rows with aligned columns. Width is that of the terminal: wide characters count two.
class Table {
  public:
    enum class Align { left, right };

    /// One entry per column; further cells are aligned left.
    explicit Table(std::vector<Align> columns = {}) : columns_(std::move(columns)) {}

    void add(std::vector<StyledText> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }

    /// The formatted rows: columns two spaces apart, each line indented by `indentation` spaces. Empty
    /// columns are omitted.
    std::vector<std::vector<StyledText>> lines(std::size_t indentation = 0) const;

    /// The same for a terminal of so many columns. Where the rows are wider, each takes two lines: the cells
    /// that fit, and below them the rest, which the console wraps.
    std::vector<std::vector<StyledText>> linesWithin(std::size_t columns, std::size_t indentation = 0) const;

    /// Prints the lines that suit the terminal.
    void print(Console& console, std::size_t indentation = 0) const;

  private:
    std::vector<std::size_t> widths() const;
    bool fits(std::size_t columns, std::size_t indentation) const;

    std::vector<Align> columns_;
    std::vector<std::vector<StyledText>> rows_;
};

} // namespace tidwen
