#pragma once

#include "platform/file_system.h"

namespace tidwen {

/// What an errno means to the callers of the file port.
FileFault faultOf(int osCode);

/// A failure of the operating system at `path`.
tl::unexpected<FileError> failed(const Path& path, int osCode);

/// A refusal of our own at `path`.
tl::unexpected<FileError> refused(const Path& path, FileFault fault);

} // namespace tidwen
