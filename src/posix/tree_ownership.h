#pragma once

#include "base/descriptor.h"

#include <optional>
#include <sys/types.h>

namespace tidwen {

/// Implements `FileSystem::holdsOthersItems`; EXDEV when something is mounted in the tree.
OsResult<bool> holdsOthersItems(int folder, const char* name, std::optional<uid_t> owner);

} // namespace tidwen
