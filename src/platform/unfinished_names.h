#pragma once

#include <string_view>

namespace tidwen {

/// Prefix of the name under which a file's new content is written until it is complete.
inline constexpr std::string_view unfinishedReplacementPrefix = ".tidwen-new-";

} // namespace tidwen
