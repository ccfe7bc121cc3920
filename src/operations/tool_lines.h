#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

namespace tidwen {

/// Splits a tool's output at line feeds only, because a file name may contain a carriage return. Empty lines
/// are left out.
inline std::vector<std::string_view> linesOf(std::string_view output) {
    std::vector<std::string_view> lines;
    while (!output.empty()) {
        const auto end = std::min(output.find('\n'), output.size());
        if (end > 0) lines.push_back(output.substr(0, end));
        output.remove_prefix(std::min(end + 1, output.size()));
    }
    return lines;
}

} // namespace tidwen
