#include "posix/tree_record.h"

#include "posix/item_description.h"
#include "posix/tree_walk.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <tl/expected.hpp>

namespace tidwen {

class TreeRecord::Visitor : public TreeVisitor {
  public:
    explicit Visitor(std::vector<Entry>& entries) : entries_(entries) {}

    int item(const TreeItem& item) override { return add(item); }

    int enter(const TreeItem& item, int opened) override {
        const bool isOwn = item.status.st_uid == ::geteuid();
        // One's own folder can be made writable; in a sticky one only owners can remove.
        if (!isOwn && ::faccessat(opened, ".", W_OK | X_OK, AT_EACCESS) != 0) return errno;
        const int fault = add(item);
        const bool isSticky = (item.status.st_mode & S_ISVTX) != 0 && !isOwn && ::geteuid() != 0;
        stickyFolders_.push_back(isSticky);
        return fault;
    }

    int leave(const struct stat&, int) override {
        stickyFolders_.pop_back();
        return 0;
    }

  private:
    int add(const TreeItem& item) {
        const auto info = describeItem(item.folder, item.name);
        if (!info) return info.error();
        if (info->immutable) return EPERM;
        if (!stickyFolders_.empty() && stickyFolders_.back() && item.status.st_uid != ::geteuid())
            return EACCES;
        const auto changed = isFirst_ ? 0 : nanoseconds(changeTime(item.status));
        isFirst_ = false;
        entries_.push_back({.inode = item.status.st_ino,
                            .mode = item.status.st_mode,
                            .size = item.status.st_size,
                            .modified = nanoseconds(modificationTime(item.status)),
                            .changed = changed});
        return 0;
    }

    std::vector<Entry>& entries_;
    std::vector<bool> stickyFolders_; ///< per level
    bool isFirst_ = true;
};

OsResult<TreeRecord> TreeRecord::of(int folder, const char* name) {
    TreeRecord record;
    Visitor visitor(record.entries_);
    if (const int fault = walkTree(folder, name, visitor)) return tl::unexpected(fault);
    std::stable_sort(record.entries_.begin(), record.entries_.end(),
                     [](const Entry& a, const Entry& b) { return a.inode < b.inode; });
    return record;
}

bool TreeRecord::holdsFolder(ino_t inode) const {
    return std::ranges::any_of(
        entries_, [&](const Entry& entry) { return entry.inode == inode && S_ISDIR(entry.mode); });
}

bool TreeRecord::holds(const struct stat& item) const {
    const auto entry = std::lower_bound(entries_.begin(), entries_.end(), item.st_ino,
                                        [](const Entry& each, ino_t inode) { return each.inode < inode; });
    // Not the time of status change, which changes when one of the file's names is removed.
    return entry != entries_.end() && entry->inode == item.st_ino && entry->mode == item.st_mode
           && entry->size == item.st_size && entry->modified == nanoseconds(modificationTime(item));
}

} // namespace tidwen
