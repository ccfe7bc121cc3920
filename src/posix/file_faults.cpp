#include "posix/file_faults.h"

#include "base/path.h"

#include <cerrno>
#include <tl/expected.hpp>

namespace tidwen {

FileFault faultOf(int osCode) {
    switch (osCode) {
    case ENOENT:
        return FileFault::missing;
    case EEXIST:
    case ENOTEMPTY:
        return FileFault::exists;
    case EACCES:
    case EPERM:
    case EROFS:
        return FileFault::denied;
    case ENOTDIR:
        return FileFault::notDirectory;
    case EISDIR:
        return FileFault::isDirectory;
    case ELOOP:
        return FileFault::throughLink;
    case ENOSPC:
    case EDQUOT:
        return FileFault::noSpace;
    case ENAMETOOLONG:
        return FileFault::nameTooLong;
    case EBUSY:
        return FileFault::busy;
    case EINVAL: // a folder into itself, or a name that the file system does not allow
    case EILSEQ:
    case EFBIG: // larger than the file system allows
    case ENOSYS:
#if ENOTSUP != EOPNOTSUPP
    case EOPNOTSUPP:
#endif
    case ENOTSUP:
        return FileFault::notSupported;
    case EXDEV:
        return FileFault::otherDisk;
    default:
        return FileFault::io;
    }
}

tl::unexpected<FileError> failed(const Path& path, int osCode) {
    return tl::unexpected(FileError{.fault = faultOf(osCode), .path = path, .osCode = osCode});
}

tl::unexpected<FileError> refused(const Path& path, FileFault fault) {
    return tl::unexpected(FileError{.fault = fault, .path = path});
}

} // namespace tidwen
