#include "posix/file_lock.h"

#include "posix/item_description.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <tl/expected.hpp>

namespace tidwen {

int tryLock(int descriptor) {
    return retryOnEintr([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) == 0 ? 0 : errno;
}

OsResult<Descriptor> tryLockItem(int folder, const char* name) {
    const auto item = statItem(folder, name);
    if (!item) return tl::unexpected(item.error());
    if (!S_ISDIR(item->st_mode) && !S_ISREG(item->st_mode)) return Descriptor();
    Descriptor opened(::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!opened.isOpen()) return tl::unexpected(errno);
    if (tryLock(opened.get()) == EWOULDBLOCK) return tl::unexpected(EBUSY); // some disks have no locks
    const auto locked = identifyOpen(opened.get());
    if (!locked || locked != identify(folder, name)) return tl::unexpected(ESTALE);
    return opened;
}

} // namespace tidwen
