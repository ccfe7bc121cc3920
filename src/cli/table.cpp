#include "cli/table.h"

#include "base/text.h"
#include "cli/line_layout.h"

#include <algorithm>

namespace tidwen {

namespace {

std::size_t width(const StyledText& cell) {
    return displayWidth(printable(cell.text));
}

} // namespace

std::vector<std::size_t> Table::widths() const {
    std::vector<std::size_t> widths;
    for (const auto& row : rows_) {
        if (row.size() > widths.size()) widths.resize(row.size(), 0);
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], width(row[i]));
    }
    return widths;
}

void Table::print(Console& console, std::size_t indentation) const {
    const auto columns = console.columns();
    std::size_t needed = indentation;
    for (const auto each : widths())
        needed += each > 0 ? each + 2 : 0;
    if (columns && needed > *columns + 2) return printInTwo(console, indentation, *columns);
    for (const auto& line : lines(indentation))
        console.line(line);
}

void Table::printInTwo(Console& console, std::size_t indentation, std::size_t columns) const {
    const auto all = widths();
    // The columns of the first line, each at most half its width, so that one long name does not widen all
    // rows.
    std::size_t count = 0, used = indentation;
    while (count < all.size() && used + std::min(all[count], columns / 2) <= columns)
        used += std::min(all[count++], columns / 2) + 2;
    Table first(columns_);
    for (const auto& row : rows_) {
        first.add({row.begin(), row.begin() + static_cast<std::ptrdiff_t>(std::min(count, row.size()))});
        for (auto& cell : first.rows_.back())
            cell.text = cutInMiddle(cell.text, columns / 2);
    }
    const auto heads = first.lines(indentation);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        console.line(heads[i]);
        std::vector<StyledText> rest;
        for (std::size_t k = count; k < rows_[i].size(); ++k) {
            if (rows_[i][k].text.empty()) continue;
            rest.push_back({std::string(rest.empty() ? indentation + 4 : 2, ' ')});
            rest.push_back(rows_[i][k]);
        }
        if (!rest.empty()) console.line(rest);
    }
}

std::vector<std::vector<StyledText>> Table::lines(std::size_t indentation) const {
    const auto widths = this->widths();
    std::vector<std::vector<StyledText>> result;
    for (const auto& row : rows_) {
        std::vector<StyledText> line{{std::string(indentation, ' ')}};
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (widths[i] == 0) continue;
            const std::string padding(widths[i] - width(row[i]), ' ');
            const bool isRight = i < columns_.size() && columns_[i] == Align::right;
            if (isRight) line.push_back({padding});
            line.push_back(row[i]);
            if (i + 1 < row.size()) line.push_back({(isRight ? "" : padding) + "  "});
        }
        result.push_back(std::move(line));
    }
    return result;
}

} // namespace tidwen
