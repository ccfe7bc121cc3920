#pragma once

namespace tidwen {

/// Locks an open file or folder against other processes (flock), without waiting, until it is closed. Returns
/// 0, EWOULDBLOCK when another holds it, or the errno of a file system that has no locks.
int tryLock(int descriptor);

} // namespace tidwen
