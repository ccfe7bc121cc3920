#include "posix/tree_walk.h"

#include "base/descriptor.h"
#include "posix/folder_listing.h"
#include "posix/folder_stack.h"
#include "posix/item_description.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

namespace {

class Walker {
  public:
    Walker(int folder, TreeVisitor& visitor) : folder_(folder), visitor_(visitor) {}

    int run(const char* name) {
        const auto holder = identifyOpen(folder_);
        if (!holder) return holder.error();
        holder_ = *holder;
        int fault = visit(name);
        while (!fault && !levels_.empty()) {
            auto& pending = levels_.back().pending;
            if (pending.empty()) {
                fault = goUp();
                continue;
            }
            const std::string next = std::move(pending.back());
            pending.pop_back();
            fault = visit(next.c_str());
        }
        return fault;
    }

  private:
    struct Level {
        std::string name;
        struct stat status;
        std::vector<std::string> pending; ///< the names still to visit, the next one last
    };

    int current() const { return stack_ ? stack_->current() : folder_; }

    int visit(const char* name) {
        const auto status = statItem(current(), name);
        if (!status) return visitor_.skipped(status.error());
        const auto identity = identify(current(), name);
        if (!identity) return visitor_.skipped(identity.error());
        if (!identity->isOnMountOf(holder_)) return visitor_.skipped(EXDEV);
        const TreeItem item{current(), name, *status};
        if (!S_ISDIR(status->st_mode)) return visitor_.item(item);
        const int fault = goDown(item);
        return fault ? visitor_.skipped(fault) : 0;
    }

    int goDown(const TreeItem& item) {
        if (levels_.size() >= visitor_.deepestLevel()) return ENAMETOOLONG;
        Descriptor opened = openFolderToRead(item.folder, item.name);
        if (!opened.isOpen() && errno == EACCES && visitor_.unlock(item))
            opened = openFolderToRead(item.folder, item.name);
        if (!opened.isOpen()) return errno;
        const auto identity = identifyOpen(opened.get());
        if (!identity) return identity.error();
        if (!identity->isOnMountOf(holder_)) return EXDEV;
        if (identity->inode != item.status.st_ino) return ESTALE;
        if (const int fault = visitor_.enter(item, opened.get())) return fault;
        auto entries = entriesOf(opened.get());
        if (!entries) return entries.error();

        Level level{.name = item.name, .status = item.status, .pending = {}};
        for (auto entry = entries->rbegin(); entry != entries->rend(); ++entry)
            level.pending.push_back(std::move(entry->name));
        if (stack_)
            stack_->push(std::move(opened), *identity);
        else
            stack_.emplace(std::move(opened));
        levels_.push_back(std::move(level));
        return 0;
    }

    int goUp() {
        const Level level = std::move(levels_.back());
        levels_.pop_back();
        if (const int fault = visitor_.leave(level.status, stack_->current())) return fault;
        if (levels_.empty())
            stack_.reset();
        else if (!stack_->pop())
            return ESTALE;
        return visitor_.left({current(), level.name.c_str(), level.status});
    }

    int folder_; ///< the folder that contains the tree
    TreeVisitor& visitor_;
    ItemIdentity holder_; ///< of `folder_`: anything mounted at the item or below it is not part of the tree
    std::optional<FolderStack> stack_;
    std::vector<Level> levels_;
};

} // namespace

int walkTree(int folder, const char* name, TreeVisitor& visitor) {
    return Walker(folder, visitor).run(name);
}

} // namespace tidwen
