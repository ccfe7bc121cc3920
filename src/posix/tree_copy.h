#pragma once

#include "base/descriptor.h"

namespace tidwen {

/// Copies an item with everything below it: content, holes, links, hard links among its files, and all
/// metadata. The new name must be free. Returns 0 or the errno, which leaves an incomplete copy. ENOTSUP for
/// a kind of item that the file system cannot store.
///
/// `claim` gets the top item of the copy, open and locked (flock), as soon as it exists, so that no other
/// process takes the copy for one that a crash left; links and special files have none.
int copyTree(int fromFolder, const char* from, int toFolder, const char* to, Descriptor& claim);

} // namespace tidwen
