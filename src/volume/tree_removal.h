#pragma once

#include "volume/tree_record.h"

namespace tidwen {

/// Removes an item and everything below it: never through a link, never on another disk mounted below. With a
/// record, what it does not hold stays, and the folders above that. 0, or the errno of the first refusal,
/// which ends it; ENOTEMPTY when something stayed.
int removeTree(int folder, const char* name, const TreeRecord* known = nullptr);

} // namespace tidwen
