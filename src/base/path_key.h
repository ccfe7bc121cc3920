#pragma once

#include "base/path.h"

namespace tidwen {

/// The path with each component replaced by its `fileNameKey`: paths that any Mac file system treats as equal
/// are equal, and one lies within another when their keys do. For comparison only; it may not name an item.
Path pathKey(const Path& path);

} // namespace tidwen
