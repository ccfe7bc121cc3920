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

/// Whether the item `whole` has everything that is set aside beside `from`. Reads both.
bool hasAllSetAside(const Path& whole, const Path& from, const FileSystem& files);

/// Whether everything set aside beside `from` is equal to the item `whole`, with nothing less. Reads both.
bool areSetAsideOf(const Path& whole, const Path& from, const FileSystem& files);

/// Whether a move from `from` to the place of `item` copies. Otherwise nothing that is aside is its original.
bool isCopiedFromBeside(const Path& item, const Path& from, const FileSystem& files);

/// Whether the item came to its place after everything beside `from` was set aside, as the copy of a move
/// does. One that was there before is another item, even if both are equal: what is aside may be another
/// home's.
bool cameAfterSetAside(const Path& item, const Path& from, const FileSystem& files);

} // namespace tidwen
