#pragma once

#include "base/descriptor.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "posix/root_resolver.h"

#include <cstdint>

namespace tidwen {

/// Implements `FileSystem::treeSize`. A file with several hard links below the folder counts once.
OsResult<TreeSize> sizeOfTree(const Place& place, std::uint64_t entryLimit, const StopToken& stop);

} // namespace tidwen
