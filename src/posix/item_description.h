#pragma once

#include "base/descriptor.h"
#include "platform/file_system.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>

namespace tidwen {

// Queries an item by a folder's descriptor and a name, so that no link on the path can redirect them.

FileKind kindOf(mode_t mode);

/// Describes the item of that name in a folder, a link itself; with an empty name (Linux only) the
/// descriptor's own item.
OsResult<FileInfo> describeItem(int folder, const char* name);

/// The same as the system's stat structure.
OsResult<struct stat> statItem(int folder, const char* name);
OsResult<struct stat> statOpen(int descriptor);

/// Identifies an item and the mount it is on: a disk mounted twice, or a folder mounted a second time, has
/// one device and two mounts.
struct ItemIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    std::uint64_t mount = 0; ///< always 0 where the system does not number mounts

    bool isOnMountOf(const ItemIdentity& other) const {
        return device == other.device && mount == other.mount;
    }
    friend bool operator==(const ItemIdentity&, const ItemIdentity&) = default;
};

OsResult<ItemIdentity> identify(int folder, const char* name);
OsResult<ItemIdentity> identifyOpen(int descriptor);

/// Whether an item of that name exists, including a dangling link; an errno other than ENOENT counts as yes.
bool isTaken(int folder, const char* name);

/// The target of a symbolic link, unresolved; EINVAL when the item is no link.
OsResult<std::string> readLinkTarget(int folder, const char* name);

/// The times of an item, whose fields are named differently on each system.
namespace statTime {
#ifdef __APPLE__
inline constexpr auto modified = &stat::st_mtimespec, changed = &stat::st_ctimespec,
                      accessed = &stat::st_atimespec;
#else
inline constexpr auto modified = &stat::st_mtim, changed = &stat::st_ctim, accessed = &stat::st_atim;
#endif
} // namespace statTime

inline timespec modificationTime(const struct stat& item) {
    return item.*statTime::modified;
}
inline timespec changeTime(const struct stat& item) {
    return item.*statTime::changed;
}
inline timespec accessTime(const struct stat& item) {
    return item.*statTime::accessed;
}

inline std::int64_t nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace tidwen
