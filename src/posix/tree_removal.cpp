#include "posix/tree_removal.h"

#include "posix/tree_walk.h"

#include <cerrno>
#include <fcntl.h>

namespace tidwen {

namespace {

class TreeRemoval : public TreeVisitor {
  public:
    explicit TreeRemoval(const TreeRecord* known) : known_(known) {}

    std::size_t deepestLevel() const override { return deepestTree; }

    int item(const TreeItem& item) override {
        if (known_ && !known_->holds(item.status)) {
            somethingStays_ = true;
            return 0;
        }
        return ::unlinkat(item.folder, item.name, 0) == 0 ? 0 : skipped(errno);
    }

    int skipped(int fault) override {
        somethingStays_ = true;
        if (!fault_) fault_ = fault;
        return 0;
    }

    bool unlock(const TreeItem& item) override {
        return item.status.st_uid == ::geteuid()
               && ::fchmodat(item.folder, item.name, (item.status.st_mode & 07777) | S_IRWXU,
                             AT_SYMLINK_NOFOLLOW)
                      == 0;
    }

    int enter(const TreeItem& item, int opened) override {
        if ((item.status.st_mode & S_IRWXU) == S_IRWXU || item.status.st_uid != ::geteuid()) return 0;
        return ::fchmod(opened, (item.status.st_mode & 07777) | S_IRWXU) == 0 ? 0 : errno;
    }

    int left(const TreeItem& item) override {
        if (::unlinkat(item.folder, item.name, AT_REMOVEDIR) == 0) return 0;
        if (errno != ENOTEMPTY && errno != EEXIST) return skipped(errno);
        somethingStays_ = true; // what is new in it may have no copy
        return 0;
    }

    int outcome() const { return fault_ == 0 && somethingStays_ ? ENOTEMPTY : fault_; }

  private:
    const TreeRecord* known_;
    bool somethingStays_ = false;
    int fault_ = 0; ///< the first one
};

} // namespace

int removeTree(int folder, const char* name, const TreeRecord* known) {
    TreeRemoval removal(known);
    if (const int fault = walkTree(folder, name, removal)) return fault;
    return removal.outcome();
}

} // namespace tidwen
