#pragma once

#include <cstddef>
#include <functional>

namespace tidwen {

/// Calls `work(0 … count-1)`, each index once, from up to `workers` threads (0: one per core) including the
/// calling thread, and returns when all are done. `work` must not throw.
void parallelFor(std::size_t count, const std::function<void(std::size_t)>& work, unsigned workers = 0);

} // namespace tidwen
