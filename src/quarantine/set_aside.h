#pragma once

#include "base/path.h"
#include "platform/file_system.h"

namespace tidwen {

// What a move between disks was cut off with: an original set aside beside its old path, and its copy. The
// original is the item until another place has all of it.

/// The copy of a move to `destination` that does not have its final name.
Path copyOf(const Path& destination);

/// Whether the copy can be complete and from an original set aside beside `from`: a copy gets the original's
/// time last. Quick; `settleInterruptedMove` compares the rest.
bool isCompleteCopy(const Path& copy, const Path& from, const FileSystem& files);

/// Whether everything set aside beside `from` is equal to the item `whole`, with nothing less. Reads both.
bool areSetAsideOf(const Path& whole, const Path& from, const FileSystem& files);

} // namespace tidwen
