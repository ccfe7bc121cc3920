#pragma once

#include "base/descriptor.h"

#include <sys/stat.h>

namespace tidwen {

/// Copies owner, group, extended attributes, permissions and times to an open file or folder. Returns 0, or
/// the errno of the first that the file system or the system refuses: none is left out.
int copyMetadata(int from, const struct stat& original, int to);

/// The same for a link or another special item, which cannot be opened; these have no attributes of their
/// own.
int applyMetadata(const struct stat& original, int folder, const char* name);

/// Whether kind, owner, permissions, size and times agree (modification to whole seconds where the copy's
/// file system stores no more; not at all with `withTimes` false, for a folder whose entries are being
/// removed).
bool haveSameMetadata(const struct stat& original, const struct stat& copy, bool withTimes);

} // namespace tidwen
