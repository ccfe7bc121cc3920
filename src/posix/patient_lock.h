#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <chrono>
#include <memory>

namespace tidwen {

/// Locks the folder of files that are about to be read, changed and written, so that two programs doing so at
/// once do not lose each other's change. Waits, then fails with `busy`: a holder needs only the time to write
/// a file, so after `patience` it hangs. Reading needs no lock, because files are replaced atomically.
FileResult<std::unique_ptr<FolderLock>>
lockPatiently(FileSystem& files, const Path& folder,
              std::chrono::milliseconds patience = std::chrono::milliseconds(5000));

} // namespace tidwen
