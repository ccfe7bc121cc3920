#pragma once

#include "platform/file_system.h"
#include "scan/path_policy.h"

namespace tidwen {

/// Settles what a kill in the middle of the move from `from` to `to` may have left on two devices. What the
/// safety policy would not let move is not looked at either: the two paths come from a file in the Trash.
void settleInterruptedMove(const Path& from, const Path& to, FileSystem& files, const PathPolicy& policy);

} // namespace tidwen
