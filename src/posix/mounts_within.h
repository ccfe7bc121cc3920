#pragma once

#include "base/descriptor.h"

namespace tidwen {

/// Whether another disk, or another folder of the same one, is mounted at the item of that name in an open
/// folder, or below it. False where the system does not tell.
bool holdsMount(int folder, const char* name);

} // namespace tidwen
