#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The one of `known` that a mistyped word most likely means: at most a few letters left out, added,
/// exchanged or swapped; letter case does not count. Nothing when none comes close.
std::optional<std::string> closest(const std::string& word, const std::vector<std::string>& known);

} // namespace tidwen
