#pragma once

#include "base/descriptor.h"

namespace tidwen {

/// Whether another file system, or another folder of the same one, is mounted at or below the item of that
/// name in an open folder. False where the system cannot tell.
bool holdsMount(int folder, const char* name);

} // namespace tidwen
