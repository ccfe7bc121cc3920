#pragma once

#include "cli/console.h"

#include <cstddef>
#include <string>
#include <vector>

/// Wraps lines to the columns of a terminal.
namespace tidwen {

/// The narrowest supported terminal.
inline constexpr std::size_t leastColumns = 20;

/// The printable form of the text, with "…" replacing its middle if it exceeds `columns`.
std::string cutInMiddle(const std::string& text, std::size_t columns);

/// Wraps each line of a text between words or East Asian characters, or within a word longer than a line;
/// nothing is omitted. Continuation lines are indented; those of a row of two columns ("  term   meaning")
/// keep the second column, which stands below the term if the terminal is narrow.
std::string wrappedText(const std::string& text, std::size_t columns);

/// A sentence that ends with a command. If both do not fit on a line the sentence is wrapped, and the command
/// stands unbroken, however long, on the next.
std::string withCommand(const std::string& sentence, const std::string& command, std::size_t columns);

/// Wraps a line between words, East Asian characters and spans; continuation lines are indented below the
/// first. A span that is a path is not broken; a piece longer than a line is cut in the middle.
std::vector<std::vector<StyledText>> wrapped(const std::vector<StyledText>& line, std::size_t columns);

} // namespace tidwen
