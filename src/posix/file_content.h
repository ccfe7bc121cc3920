#pragma once

#include "base/descriptor.h"

#include <cstdint>
#include <functional>

namespace tidwen {

/// Copies the content of one open file into another, empty one. Holes stay holes; they are trusted only where
/// they agree with the allocated size. Returns 0 or the errno.
int copyContent(int from, int to, std::uint64_t size);

/// Whether the first `size` bytes of two open files are equal. Reads all of them, because what the copy
/// relied on may have been wrong; with more than 1 GiB of holes, which would take hours in a file of
/// terabytes, only what either disk reports as data. Asks `mayRead` (may be empty) first for the bytes to
/// read that have cost the first file's disk nothing, then for 0 before each piece; ECANCELED if it may not.
OsResult<bool> haveSameContent(int a, int b, std::uint64_t size,
                               const std::function<bool(std::uint64_t)>& mayRead);

} // namespace tidwen
