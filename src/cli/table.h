#pragma once

#include "cli/console.h"

#include <string>
#include <vector>

namespace tidwen {

/// Rows whose columns stand below one another. Width is what a terminal shows: wide letters count two.
class Table {
  public:
    enum class Align { left, right };

    /// One entry per column; cells beyond them are aligned left.
    explicit Table(std::vector<Align> columns = {}) : columns_(std::move(columns)) {}

    void add(std::vector<StyledText> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }

    /// The rows, columns two blanks apart, each line begun with `indentation` blanks. A column that is empty
    /// in every row takes no room.
    std::vector<std::vector<StyledText>> lines(std::size_t indentation = 0) const;

    /// The lines as they are, or on a terminal that they do not fit on two for each row: the columns that
    /// fit, long cells cut in the middle, and below them the rest.
    void print(Console& console, std::size_t indentation = 0) const;

  private:
    std::vector<std::size_t> widths() const;
    void printInTwo(Console& console, std::size_t indentation, std::size_t columns) const;

    std::vector<Align> columns_;
    std::vector<std::vector<StyledText>> rows_;
};

} // namespace tidwen
