#include "posix/flush.h"

#include "base/descriptor.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace tidwen {

int flushFile(int descriptor) {
#ifdef F_FULLFSYNC
    if (::fcntl(descriptor, F_FULLFSYNC) == 0) return 0; // there, fsync alone stops at the drive's own cache
#endif
    return retryOnEintr([&] { return ::fsync(descriptor); }) == 0 ? 0 : errno;
}

int flushFolder(int folder) {
    const Descriptor readable(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!readable.isOpen()) return errno == EACCES ? 0 : errno;
    const int fault = flushFile(readable.get());
    return fault == EINVAL || fault == ENOTSUP ? 0 : fault;
}

int orderFolder(int folder) {
#ifdef F_BARRIERFSYNC
    static const bool flushesAll =
        std::getenv("TIDWEN_FLUSH_ALL") != nullptr; // NOLINT(concurrency-mt-unsafe)
    const Descriptor readable(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!flushesAll && readable.isOpen() && ::fcntl(readable.get(), F_BARRIERFSYNC) == 0) return 0;
#endif
    return flushFolder(folder);
}

int flushDisk(int folder) {
#ifdef __linux__
    const Descriptor readable(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!readable.isOpen()) return errno;
    return ::syncfs(readable.get()) == 0 ? 0 : errno;
#else
    return flushFolder(folder); // F_FULLFSYNC flushes the whole drive's cache
#endif
}

int writeFully(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = retryOnEintr([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (written < 0) return errno;
        if (written == 0) return EIO;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

} // namespace tidwen
