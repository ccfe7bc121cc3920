#pragma once

#include "platform/file_system.h"

#include <chrono>

namespace tidwen {

/// Takes the lock of the folder whose files are about to be read, changed and written again, so that of two
/// programs that do it at once neither undoes what the other did. Waits for its turn, then `busy`: none holds
/// it longer than it takes to write a file, so after `patience` the other one hangs. Reading needs no lock,
/// because files are replaced as a whole.
FileResult<std::unique_ptr<FolderLock>>
lockPatiently(FileSystem& files, const Path& folder,
              std::chrono::milliseconds patience = std::chrono::milliseconds(5000));

} // namespace tidwen
