#pragma once

#include "base/path.h"

#include <cstddef>
#include <string>

namespace tidwen {

/// The longest file name, in bytes, that every supported file system accepts.
inline constexpr std::size_t longestFileName = 255;

/// Give up after this many names that are taken.
inline constexpr int lastNumberTried = 999;

/// Truncates to at most `bytes` bytes, never inside a character.
std::string shortened(std::string text, std::size_t bytes);

/// The path itself for 1, then "Name 2.ext" and so on beside it, or "com.example.notes 2" where what follows
/// the last dot is not the extension of a known kind of file; the stem is shortened where the name would be
/// too long.
Path numberedName(const Path& path, int number);

} // namespace tidwen
