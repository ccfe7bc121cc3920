#pragma once

#include "posix/tree_record.h"

namespace tidwen {

/// Removes an item and everything below it: never through a link, never on another disk mounted below. With a
/// record, what it does not hold stays. What cannot be removed stays, with the folders above it, and the rest
/// goes. 0, or the errno of the first refusal; ENOTEMPTY when something stayed without one.
int removeTree(int folder, const char* name, const TreeRecord* known = nullptr);

} // namespace tidwen
