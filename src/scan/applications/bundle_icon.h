#pragma once

#include "platform/file_system.h"

#include <string>

namespace tidwen {

/// What `Workspace::iconOf` promises, from the bundle's files: the file that "CFBundleIconFile" names, in the
/// bundle's Resources.
FileResult<std::string> readBundleIcon(const FileSystem& files, const Path& bundle);

} // namespace tidwen
