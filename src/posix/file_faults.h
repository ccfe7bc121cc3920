#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <tl/expected.hpp>

namespace tidwen {

/// The fault of the file port that corresponds to an errno.
FileFault faultOf(int osCode);

/// A system error at `path`.
tl::unexpected<FileError> failed(const Path& path, int osCode);

/// A refusal by this program at `path`.
tl::unexpected<FileError> refused(const Path& path, FileFault fault);

} // namespace tidwen
