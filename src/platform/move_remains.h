#pragma once

#include <string_view>

namespace tidwen {

/// What a move between disks calls its copy while that grows, and its original while that stands aside, each
/// followed by the item's name.
inline constexpr std::string_view growingCopyPrefix = ".tidwen-copy-";
inline constexpr std::string_view setAsidePrefix = ".tidwen-moved-";

} // namespace tidwen
