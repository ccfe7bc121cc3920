#pragma once

#include "cli/console.h"

#include <cstddef>
#include <string>
#include <vector>

/// How lines fit into the columns of a terminal.
namespace tidwen {

/// The narrowest terminal that is laid out for.
inline constexpr std::size_t leastColumns = 20;

/// The text as a terminal shows it, with "…" in place of its middle where it takes more than `columns`.
std::string cutInMiddle(const std::string& text, std::size_t columns);

/// Each line of a text in as many as it needs, broken between words and, where one takes more than a line,
/// within it: nothing is left out. What follows is indented.
std::string wrappedText(const std::string& text, std::size_t columns);

/// The line in as many as it needs, broken between words and spans, what follows indented below the first. A
/// span that is a path stays whole; what takes more than a line by itself is cut in the middle.
std::vector<std::vector<StyledText>> wrapped(const std::vector<StyledText>& line, std::size_t columns);

} // namespace tidwen
