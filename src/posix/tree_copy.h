#pragma once

namespace tidwen {

/// Copies an item with everything below it: content, holes, links, hard links among its files, and all
/// metadata. The new name must be free. Returns 0 or the errno, which leaves an incomplete copy. ENOTSUP for
/// a kind of item that the file system cannot store.
int copyTree(int fromFolder, const char* from, int toFolder, const char* to);

} // namespace tidwen
