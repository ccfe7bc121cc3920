#include "posix/exclusive_rename.h"

#include "posix/item_description.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace tidwen {

namespace {

int renameInOneStep(int fromFolder, const char* from, int toFolder, const char* to) {
#ifdef __APPLE__
    return ::renameatx_np(fromFolder, from, toFolder, to, RENAME_EXCL) == 0 ? 0 : errno;
#else
    return ::renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE) == 0 ? 0 : errno;
#endif
}

int renamePlainly(int fromFolder, const char* from, int toFolder, const char* to) {
    return ::renameat(fromFolder, from, toFolder, to) == 0 ? 0 : errno;
}

/// rename() itself replaces nothing but an empty folder.
int renameFolder(int fromFolder, const char* from, int toFolder, const char* to) {
    if (isTaken(toFolder, to)) return EEXIST;
    const int fault = renamePlainly(fromFolder, from, toFolder, to);
    return (fault == ENOTDIR || fault == ENOTEMPTY) && isTaken(toFolder, to) ? EEXIST : fault;
}

int renameByLink(int fromFolder, const char* from, int toFolder, const char* to) {
    if (::linkat(fromFolder, from, toFolder, to, 0) == 0) {
        if (::unlinkat(fromFolder, from, 0) == 0) return 0;
        const int fault = errno;
        ::unlinkat(toFolder, to, 0);
        return fault;
    }
    if (errno == EEXIST || errno == ENOENT || errno == EXDEV) return errno;
    // No hard links here, or not to another owner's file.
    if (isTaken(toFolder, to)) return EEXIST;
    return renamePlainly(fromFolder, from, toFolder, to);
}

} // namespace

int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to) {
    const int fault = renameInOneStep(fromFolder, from, toFolder, to);
    if (fault != EINVAL && fault != ENOSYS && fault != ENOTSUP) return fault;
    const auto item = statItem(fromFolder, from);
    if (!item) return item.error();
    return S_ISDIR(item->st_mode) ? renameFolder(fromFolder, from, toFolder, to)
                                  : renameByLink(fromFolder, from, toFolder, to);
}

bool finishLinkedRename(int fromFolder, const char* from, int toFolder, const char* to) {
    const auto first = statItem(fromFolder, from);
    const auto second = statItem(toFolder, to);
    if (!first || !second || S_ISDIR(first->st_mode)) return false;
    if (first->st_dev != second->st_dev || first->st_ino != second->st_ino) return false;
    // With a single link, both names are the same entry under two spellings of its path.
    return first->st_nlink >= 2 && ::unlinkat(fromFolder, from, 0) == 0;
}

} // namespace tidwen
