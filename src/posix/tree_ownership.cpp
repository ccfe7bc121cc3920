#include "posix/tree_ownership.h"

#include "posix/tree_walk.h"

#include <cerrno>
#include <fcntl.h>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

/// Walks the whole tree even after the first find, because anything mounted in it takes precedence.
class TreeOwnership : public TreeVisitor {
  public:
    explicit TreeOwnership(std::optional<uid_t> owner)
        : owner_(owner.value_or(::geteuid())), mayTakeAll_(!owner && owner_ == 0) {}

    bool holdsOthers() const { return holdsOthers_; }

    std::size_t deepestLevel() const override { return deepestTree; }

    int item(const TreeItem& item) override {
        holdsOthers_ |= isOthers(item.status);
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
        holdsOthers_ |= isOthers(item.status);
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

    bool isOthers(const struct stat& status) const { return !mayTakeAll_ && status.st_uid != owner_; }

    uid_t owner_;
    bool mayTakeAll_;
    bool holdsOthers_ = false;
};

} // namespace

OsResult<bool> holdsOthersItems(int folder, const char* name, std::optional<uid_t> owner) {
    TreeOwnership ownership(owner);
    if (const int fault = walkTree(folder, name, ownership)) return tl::unexpected(fault);
    return ownership.holdsOthers();
}

} // namespace tidwen
