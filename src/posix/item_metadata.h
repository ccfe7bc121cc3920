#pragma once

#include "base/descriptor.h"

#include <sys/stat.h>

namespace tidwen {

/// Gives an open file or folder the owner, group, extended attributes, permissions and times of another one.
/// 0, or the errno of the first that the disk or the system refuses: nothing is left out.
int copyMetadata(int from, const struct stat& original, int to);

/// The same for a link or another special item, which cannot be opened; these have no attributes of their
/// own.
int applyMetadata(const struct stat& original, int folder, const char* name);

/// Whether kind, owner, permissions, size and times agree (`modified` to whole seconds where the copy's disk
/// keeps no more; not at all with `withTimes` false, as a folder's change when its entries go).
bool haveSameMetadata(const struct stat& original, const struct stat& copy, bool withTimes);

} // namespace tidwen
