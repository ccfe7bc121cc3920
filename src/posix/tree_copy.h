#pragma once

namespace tidwen {

/// Copies an item with everything below it: content, holes, links, hard links among its files, and the
/// metadata of each. The new name must be free. 0 or the errno; then what was copied so far is there.
/// ENOTSUP where the item or one below it is of a kind that the disk cannot hold.
int copyTree(int fromFolder, const char* from, int toFolder, const char* to);

} // namespace tidwen
