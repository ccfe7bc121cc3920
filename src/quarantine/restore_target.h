#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <set>

namespace tidwen {

/// Where to put an item back: its old path, or "Name 2.ext" … "Name 999.ext" beside what is there, else a
/// name with a new UUID and no extension. Names in `taken` count as existing. Numbers below `first` are
/// skipped; it is set to the number used.
Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken = {});
Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken, int& first);

} // namespace tidwen
