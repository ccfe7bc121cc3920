#include "volume/tree_ownership.h"

#include "volume/tree_walk.h"

#include <fcntl.h>

namespace tidwen {

namespace {

/// Goes through all of the tree, also behind the first find: what is mounted in it counts most.
class TreeOwnership : public TreeVisitor {
  public:
    explicit TreeOwnership(uid_t owner) : owner_(owner) {}

    bool holdsOthers() const { return holdsOthers_; }

    std::size_t deepestLevel() const override { return deepestTree; }

    int item(const TreeItem& item) override {
        holdsOthers_ |= item.status.st_uid != owner_;
        return 0;
    }

    int skipped(int fault) override {
        holdsOthers_ = true;
        return fault == EXDEV ? fault : 0;
    }

    bool unlock(const TreeItem& item) override {
        return isLocked(item.status)
               && ::fchmodat(item.folder, item.name, opened(item.status), AT_SYMLINK_NOFOLLOW) == 0;
    }

    int enter(const TreeItem& item, int folder) override {
        holdsOthers_ |= item.status.st_uid != owner_;
        if (isLocked(item.status) && ::fchmod(folder, opened(item.status)) != 0) return errno;
        return 0;
    }

    int leave(const struct stat& status, int folder) override {
        if (isLocked(status)) (void)::fchmod(folder, status.st_mode & 07777);
        return 0;
    }

  private:
    static constexpr mode_t needed = S_IRUSR | S_IXUSR;

    static bool isLocked(const struct stat& status) {
        return status.st_uid == ::geteuid() && (status.st_mode & needed) != needed;
    }
    static mode_t opened(const struct stat& status) { return (status.st_mode & 07777) | needed; }

    uid_t owner_;
    bool holdsOthers_ = false;
};

} // namespace

OsResult<bool> holdsOthersItems(int folder, const char* name, uid_t owner) {
    TreeOwnership ownership(owner);
    if (const int fault = walkTree(folder, name, ownership)) return tl::unexpected(fault);
    return ownership.holdsOthers();
}

} // namespace tidwen
