#pragma once

#include "platform/file_system.h"
#include "volume/descriptor.h"

#include <string>
#include <sys/stat.h>

namespace tidwen {

FileKind kindOf(mode_t mode);

/// Describes the item of that name in a folder, a link itself; with an empty name (Linux only) what the
/// descriptor stands for.
OsResult<FileInfo> describeItem(int folder, const char* name);

/// The same as the system tells it.
OsResult<struct stat> statItem(int folder, const char* name);
OsResult<struct stat> statOpen(int descriptor);

/// Whether an item of that name is there, a dangling link included; an errno other than ENOENT counts as yes.
bool isTaken(int folder, const char* name);

/// Where a symbolic link points, as it stands; EINVAL when the item is no link.
OsResult<std::string> readLinkTarget(int folder, const char* name);

inline timespec modificationTime(const struct stat& item) {
#ifdef __APPLE__
    return item.st_mtimespec;
#else
    return item.st_mtim;
#endif
}

inline timespec changeTime(const struct stat& item) {
#ifdef __APPLE__
    return item.st_ctimespec;
#else
    return item.st_ctim;
#endif
}

inline timespec accessTime(const struct stat& item) {
#ifdef __APPLE__
    return item.st_atimespec;
#else
    return item.st_atim;
#endif
}

inline std::int64_t nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace tidwen
