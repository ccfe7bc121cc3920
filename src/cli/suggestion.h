#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The one of `known` closest to a mistyped word: at most a few letters omitted, inserted, replaced or
/// swapped, ignoring case. nullopt if none is close.
std::optional<std::string> closest(const std::string& word, const std::vector<std::string>& known);

} // namespace tidwen
