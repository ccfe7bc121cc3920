#include "base/ownership.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <tl/expected.hpp>
#include <utility>

namespace tidwen {

namespace {

bool isOwnedBy(const struct stat& item, const Ownership& owner) {
    return item.st_uid == owner.user && item.st_gid == owner.group;
}

int give(int descriptor, const Ownership& owner) {
    if (::fchown(descriptor, owner.user, owner.group) == 0) return 0;
    return ::geteuid() == 0 ? errno : 0; // only root may change owners
}

bool isEmpty(Descriptor folder) {
    DIR* const entries = ::fdopendir(folder.get());
    if (!entries) return false;
    folder.release(); // the stream closes it
    bool isEmpty = true;
    while (const auto* entry = ::readdir(entries)) // NOLINT(concurrency-mt-unsafe): a stream of its own
        if (const std::string_view name(entry->d_name); name != "." && name != "..") isEmpty = false;
    ::closedir(entries);
    return isEmpty;
}

} // namespace

OsResult<Ownership> ownershipOf(int descriptor) {
    struct stat item {};
    if (::fstat(descriptor, &item) != 0) return tl::unexpected(errno);
    return Ownership{item.st_uid, item.st_gid};
}

int giveFile(int file, const Ownership& owner) {
    struct stat item {};
    if (::fstat(file, &item) != 0) return errno;
    return isOwnedBy(item, owner) ? 0 : give(file, owner);
}

int giveNewFolder(int parent, const char* name, const Ownership& owner) {
    struct stat item {};
    if (::fstatat(parent, name, &item, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    if (isOwnedBy(item, owner)) return 0;
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor folder(::openat(parent, name, flags));
    if (!folder.isOpen()) return errno == ENOTDIR || errno == ELOOP ? EBUSY : errno;
    if (::fstat(folder.get(), &item) != 0) return errno;
    const bool isOurs = item.st_uid == ::geteuid() && (item.st_mode & 0777) == 0700;
    Descriptor entries(::openat(folder.get(), ".", flags));
    if (!entries.isOpen()) return errno;
    if (!isOurs || !isEmpty(std::move(entries))) return EBUSY;
    return give(folder.get(), owner);
}

} // namespace tidwen
