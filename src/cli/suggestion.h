#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The one of `known` that continues the word after a hyphen, else the one closest to it: at most a few
/// letters omitted, inserted, replaced or swapped, ignoring case. nullopt if none is close.
std::optional<std::string> closest(const std::string& word, const std::vector<std::string>& known);

} // namespace tidwen
