#pragma once

#include "base/descriptor.h"

namespace tidwen {

/// Locks an open file or folder against other processes (flock), without waiting, until it is closed. Returns
/// 0, EWOULDBLOCK when another holds it, or the errno of a file system that has no locks.
int tryLock(int descriptor);

/// The same for an item of a folder. Returns it open; closed for what has no lock of its own, such as a link.
/// EBUSY when another holds it, ESTALE when it was replaced meanwhile, otherwise the errno of opening it.
OsResult<Descriptor> tryLockItem(int folder, const char* name);

} // namespace tidwen
