#include "posix/file_lock.h"

#include "base/descriptor.h"

#include <cerrno>
#include <sys/file.h>

namespace tidwen {

int tryLock(int descriptor) {
    return retryOnEintr([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) == 0 ? 0 : errno;
}

} // namespace tidwen
