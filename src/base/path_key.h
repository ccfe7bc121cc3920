#pragma once

#include "base/path.h"

namespace tidwen {

/// The path with each component as `fileNameKey` gives it: paths that a Mac's disks take for one are equal,
/// and one lies within another when their keys do. Only for comparing; it may name nothing.
Path pathKey(const Path& path);

} // namespace tidwen
