#pragma once

namespace tidwen {

/// What a move between disks calls its copy until that is whole; the item's name follows.
inline constexpr const char* growingCopyPrefix = ".tidwen-copy-";

} // namespace tidwen
