#pragma once

#include "base/descriptor.h"

#include <cstdint>

namespace tidwen {

/// Writes the content of one open file into another, empty one. Holes stay holes; what the disk says of them
/// is believed only where it agrees with what the file takes on the disk. 0 or the errno.
int copyContent(int from, int to, std::uint64_t size);

/// Whether the first `size` bytes of two open files are the same. All of them are read, because what was
/// believed for the copy may have been wrong; beyond 1 GiB of holes, which would take hours in a file of
/// terabytes, only what one of the disks calls data.
OsResult<bool> haveSameContent(int a, int b, std::uint64_t size);

} // namespace tidwen
