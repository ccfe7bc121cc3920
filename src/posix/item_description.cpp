#include "posix/item_description.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <tl/expected.hpp>
#ifdef __linux__
#include <sys/sysmacros.h>
#else
#include <sys/attr.h>
#endif

namespace tidwen {

namespace {

constexpr std::uint64_t blockBytes = 512; // the unit of st_blocks on every file system

} // namespace

FileKind kindOf(mode_t mode) {
    if (S_ISREG(mode)) return FileKind::regular;
    if (S_ISDIR(mode)) return FileKind::directory;
    if (S_ISLNK(mode)) return FileKind::symbolicLink;
    return FileKind::other;
}

#ifdef __linux__

namespace {

std::int64_t nanoseconds(const statx_timestamp& time) {
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

std::uint64_t mountOf(const struct statx& item) {
    return item.stx_mask & STATX_MNT_ID ? item.stx_mnt_id : 0;
}

} // namespace

// statx also returns the flags that forbid a change; otherwise the item would have to be opened.
OsResult<FileInfo> describeItem(int folder, const char* name) {
    struct statx item {};
    constexpr unsigned wanted = STATX_BASIC_STATS | STATX_BTIME | STATX_MNT_ID;
    if (::statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH, wanted, &item) != 0)
        return tl::unexpected(errno);
    FileInfo info{.kind = kindOf(item.stx_mode),
                  .size = item.stx_size,
                  .allocatedBytes = item.stx_blocks * blockBytes,
                  .permissions = item.stx_mode & 07777u,
                  .ownerID = item.stx_uid,
                  .groupID = item.stx_gid,
                  .modifiedNanoseconds = nanoseconds(item.stx_mtime),
                  .device = makedev(item.stx_dev_major, item.stx_dev_minor),
                  .mount = mountOf(item),
                  .inode = item.stx_ino,
                  .immutable = (item.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0,
                  .createdNanoseconds = std::nullopt,
                  .addedNanoseconds = nanoseconds(item.stx_ctime)};
    if (item.stx_mask & STATX_BTIME) info.createdNanoseconds = nanoseconds(item.stx_btime);
    return info;
}

OsResult<ItemIdentity> identify(int folder, const char* name) {
    struct statx item {};
    if (::statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH | AT_NO_AUTOMOUNT, STATX_INO | STATX_MNT_ID,
                &item)
        != 0)
        return tl::unexpected(errno);
    return ItemIdentity{makedev(item.stx_dev_major, item.stx_dev_minor), item.stx_ino, mountOf(item)};
}

OsResult<ItemIdentity> identifyOpen(int descriptor) {
    return identify(descriptor, "");
}

#else

namespace {

std::optional<std::int64_t> addedToFolder(int folder, const char* name) {
    struct attrlist wanted {};
    wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
    wanted.commonattr = ATTR_CMN_ADDEDTIME;
    struct __attribute__((packed)) {
        std::uint32_t length;
        timespec added;
    } answer{};
    if (::getattrlistat(folder, name, &wanted, &answer, sizeof answer, FSOPT_NOFOLLOW) != 0
        || answer.length != sizeof answer)
        return std::nullopt;
    const timespec added = answer.added;
    return nanoseconds(added);
}

} // namespace

/// Flags with which an item stays where it is, whatever its owner or root wants; the last two are those of
/// System Integrity Protection.
constexpr auto movingForbidden =
    UF_IMMUTABLE | UF_APPEND | SF_IMMUTABLE | SF_APPEND | SF_RESTRICTED | SF_NOUNLINK;

OsResult<FileInfo> describeItem(int folder, const char* name) {
    const auto item = statItem(folder, name);
    if (!item) return tl::unexpected(item.error());
    const auto added = addedToFolder(folder, name);
    return FileInfo{.kind = kindOf(item->st_mode),
                    .size = static_cast<std::uint64_t>(item->st_size),
                    .allocatedBytes = static_cast<std::uint64_t>(item->st_blocks) * blockBytes,
                    .permissions = item->st_mode & 07777u,
                    .ownerID = item->st_uid,
                    .groupID = item->st_gid,
                    .modifiedNanoseconds = nanoseconds(modificationTime(*item)),
                    .device = static_cast<std::uint64_t>(item->st_dev),
                    .inode = item->st_ino,
                    .immutable = (item->st_flags & movingForbidden) != 0,
                    .createdNanoseconds = nanoseconds(item->st_birthtimespec),
                    .addedNanoseconds = added ? *added : nanoseconds(changeTime(*item))};
}

OsResult<ItemIdentity> identify(int folder, const char* name) {
    const auto item = statItem(folder, name);
    if (!item) return tl::unexpected(item.error());
    return ItemIdentity{.device = item->st_dev, .inode = item->st_ino};
}

OsResult<ItemIdentity> identifyOpen(int descriptor) {
    const auto item = statOpen(descriptor);
    if (!item) return tl::unexpected(item.error());
    return ItemIdentity{.device = item->st_dev, .inode = item->st_ino};
}

#endif

OsResult<struct stat> statItem(int folder, const char* name) {
    OsResult<struct stat> item; // filled in place, because a walk describes hundreds of thousands of items
    if (::fstatat(folder, name, &*item, AT_SYMLINK_NOFOLLOW) != 0) item = tl::unexpected(errno);
    return item;
}

OsResult<struct stat> statOpen(int descriptor) {
    struct stat item {};
    if (::fstat(descriptor, &item) != 0) return tl::unexpected(errno);
    return item;
}

bool isTaken(int folder, const char* name) {
    const auto item = statItem(folder, name);
    return item || item.error() != ENOENT;
}

OsResult<std::string> readLinkTarget(int folder, const char* name) {
    char target[4096]; // no system supports a longer target
    const ssize_t length = ::readlinkat(folder, name, target, sizeof target);
    if (length < 0) return tl::unexpected(errno);
    if (static_cast<std::size_t>(length) == sizeof target) return tl::unexpected(ENAMETOOLONG);
    return std::string(target, static_cast<std::size_t>(length));
}

} // namespace tidwen
