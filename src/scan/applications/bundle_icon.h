#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <string>

namespace tidwen {

/// Implements `Workspace::iconOf` from the bundle's files: reads the file named by "CFBundleIconFile" in the
/// bundle's Resources.
FileResult<std::string> readBundleIcon(const FileSystem& files, const Path& bundle);

} // namespace tidwen
