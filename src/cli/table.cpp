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
    for (const auto& line : columns ? linesWithin(*columns, indentation) : lines(indentation))
        console.line(line);
}

bool Table::fits(std::size_t columns, std::size_t indentation) const {
    std::size_t needed = indentation;
    for (const auto each : widths())
        needed += each > 0 ? each + 2 : 0;
    return needed <= columns + 2;
}

std::vector<std::vector<StyledText>> Table::linesWithin(std::size_t columns, std::size_t indentation) const {
    if (fits(columns, indentation)) return lines(indentation);
    // A cell of more than half a line goes below with the rest of its row, so that it does not widen all
    // rows.
    const auto widest = columns / 2;
    const auto all = widths();
    std::size_t count = 0, used = indentation;
    while (count < all.size() && used + std::min(all[count], widest) <= columns)
        used += std::min(all[count++], widest) + 2;
    Table first(columns_);
    for (const auto& row : rows_) {
        const auto last = row.begin() + static_cast<std::ptrdiff_t>(std::min(count, row.size()));
        first.add({row.begin(), std::find_if(row.begin(), last,
                                             [&](const StyledText& cell) { return width(cell) > widest; })});
    }
    const auto heads = first.lines(indentation);
    std::vector<std::vector<StyledText>> result;
    result.reserve(2 * rows_.size());
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const auto fitting = first.rows_[i].size();
        if (fitting > 0) result.push_back(heads[i]);
        std::vector<StyledText> rest;
        for (std::size_t k = fitting; k < rows_[i].size(); ++k) {
            if (rows_[i][k].text.empty()) continue;
            rest.push_back({std::string(rest.empty() ? indentation + (fitting > 0 ? 4 : 0) : 2, ' ')});
            rest.push_back(rows_[i][k]);
        }
        if (!rest.empty()) result.push_back(std::move(rest));
    }
    return result;
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
