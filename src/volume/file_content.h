#pragma once

#include "base/descriptor.h"

#include <cstdint>

namespace tidwen {

/// Writes the content of one open file into another, empty one; holes stay holes. 0 or the errno.
int copyContent(int from, int to, std::uint64_t size);

/// Whether the first `size` bytes of two open files are the same.
OsResult<bool> haveSameContent(int a, int b, std::uint64_t size);

} // namespace tidwen
