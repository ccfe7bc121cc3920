#pragma once

#include "posix/tree_record.h"

namespace tidwen {

/// Removes an item and everything below it: never through a link, never on another mounted disk. With a
/// record, only what it contains. What cannot be removed stays with the folders above it; the rest is
/// removed. Returns 0 or the errno of the first refusal; ENOTEMPTY when something stayed without one.
int removeTree(int folder, const char* name, const TreeRecord* known = nullptr);

} // namespace tidwen
