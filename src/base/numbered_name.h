#pragma once

#include "base/path.h"

#include <cstddef>
#include <string>

namespace tidwen {

/// What every disk takes for one name, in bytes.
inline constexpr std::size_t longestFileName = 255;

/// Beyond this many names that are taken something else is going on.
inline constexpr int lastNumberTried = 999;

/// At most `bytes` bytes, without a cut through a character.
std::string shortened(std::string text, std::size_t bytes);

/// The path itself for 1, then "Name 2.ext" and so on beside it; the stem is shortened where the whole would
/// be too long for a name.
Path numberedName(const Path& path, int number);

} // namespace tidwen
