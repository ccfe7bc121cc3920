#pragma once

#include <string_view>

namespace tidwen {

/// What the new content of a file is called until it is whole; the file's name follows.
inline constexpr std::string_view unfinishedReplacementPrefix = ".tidwen-new-";

} // namespace tidwen
