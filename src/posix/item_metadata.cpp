#include "posix/item_metadata.h"

#include "posix/extended_attributes.h"
#include "posix/item_description.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#ifdef __APPLE__
#include <copyfile.h>
#include <sys/attr.h>
#include <unistd.h>
#endif

namespace tidwen {

namespace {

std::array<timespec, 2> timesOf(const struct stat& item) {
    return {accessTime(item), modificationTime(item)};
}

#ifdef __APPLE__
// Access control lists and the Finder's flags; other flags forbid changes, and such an item is not moved.
int copyMacMetadata(int from, const struct stat& original, int to) {
    if (::fcopyfile(from, to, nullptr, COPYFILE_ACL) != 0) return errno;
    return ::fchflags(to, original.st_flags & (UF_HIDDEN | UF_NODUMP | UF_OPAQUE)) == 0 ? 0 : errno;
}

/// Not every disk stores when an item was created; a move does not fail for that.
void copyCreationDate(const struct stat& original, int to) {
    struct attrlist wanted {};
    wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
    wanted.commonattr = ATTR_CMN_CRTIME;
    timespec created = original.st_birthtimespec;
    (void)::fsetattrlist(to, &wanted, &created, sizeof created, 0);
}
#else
int copyMacMetadata(int, const struct stat&, int) {
    return 0;
}
void copyCreationDate(const struct stat&, int) {}
#endif

} // namespace

int copyMetadata(int from, const struct stat& original, int to) {
    // In this order: chown clears set-user bits, and attributes can change permissions and times.
    if (::fchown(to, original.st_uid, original.st_gid) != 0) return errno;
    if (const int fault = copyExtendedAttributes(from, to)) return fault;
    if (::fchmod(to, original.st_mode & 07777) != 0) return errno;
    if (const int fault = copyMacMetadata(from, original, to)) return fault;
    if (::futimens(to, timesOf(original).data()) != 0) return errno;
    copyCreationDate(original, to); // last, because an older date of change takes it along
    return 0;
}

int applyMetadata(const struct stat& original, int folder, const char* name) {
    if (::fchownat(folder, name, original.st_uid, original.st_gid, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    if (!S_ISLNK(original.st_mode)
        && ::fchmodat(folder, name, original.st_mode & 07777, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    return ::utimensat(folder, name, timesOf(original).data(), AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

bool haveSameMetadata(const struct stat& original, const struct stat& copy, bool withTimes) {
    const bool isFolder = S_ISDIR(original.st_mode), isLink = S_ISLNK(original.st_mode);
    if ((original.st_mode & S_IFMT) != (copy.st_mode & S_IFMT)) return false;
    if (!isLink && (original.st_mode & 07777) != (copy.st_mode & 07777)) return false;
    if (original.st_uid != copy.st_uid || original.st_gid != copy.st_gid) return false;
    if (!isFolder && original.st_size != copy.st_size) return false;
    if ((S_ISCHR(original.st_mode) || S_ISBLK(original.st_mode)) && original.st_rdev != copy.st_rdev)
        return false;
    if (!withTimes) return true;
    const timespec mine = modificationTime(original), its = modificationTime(copy);
    return mine.tv_sec == its.tv_sec && (mine.tv_nsec == its.tv_nsec || its.tv_nsec == 0);
}

} // namespace tidwen
