#include "cli/table.h"

#include "base/text.h"

#include <algorithm>

namespace tidwen {

namespace {

std::size_t width(const Span& cell) {
    return displayWidth(printable(cell.text));
}

} // namespace

std::vector<std::vector<Span>> Table::lines(std::size_t indentation) const {
    std::vector<std::size_t> widths;
    for (const auto& row : rows_) {
        if (row.size() > widths.size()) widths.resize(row.size(), 0);
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], width(row[i]));
    }

    std::vector<std::vector<Span>> result;
    for (const auto& row : rows_) {
        std::vector<Span> line{{std::string(indentation, ' ')}};
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
