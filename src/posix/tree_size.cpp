#include "posix/tree_size.h"

#include "base/descriptor.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "posix/bulk_entries.h"
#include "posix/entry_sizes.h"
#include "posix/folder_listing.h"
#include "posix/folder_stack.h"
#include "posix/item_description.h"

#include <cerrno>
#include <cstdint>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

class SizeWalk {
  public:
    SizeWalk(Descriptor top, const struct stat& item, std::uint64_t limit, const StopToken& stop)
        : top_(identifyOpen(top.get()).value_or(ItemIdentity{})),
          folders_(std::move(top)),
          limit_(limit),
          stop_(stop) {
        add(entrySize(item));
    }

    TreeSize run() {
        pending_.emplace_back();
        readCurrent();
        while (!pending_.empty() && !size_.capped) {
            auto& names = pending_.back();
            if (names.empty()) {
                pending_.pop_back();
                if (!folders_.pop()) size_.capped = true;
                continue;
            }
            const std::string name = std::move(names.back());
            names.pop_back();
            enter(name);
        }
        return size_;
    }

  private:
    void add(const EntrySize& item) {
        if (item.links > 1 && !item.isFolder && !linked_.insert(item.inode).second) return;
        size_.allocatedBytes += item.allocatedBytes;
    }

    void readCurrent() {
        listSizes(folders_.current(), [this](const char* name, const EntrySize* item) {
            size_.capped = size_.entries >= limit_ || stop_.stopRequested();
            if (size_.capped) return false;
            ++size_.entries;
            if (!item || item->device != static_cast<std::uint64_t>(top_.device)) return true;
            add(*item);
            if (item->isFolder) pending_.back().emplace_back(name);
            return true;
        });
    }

    /// A folder that cannot be opened counts as empty.
    void enter(const std::string& name) {
        Descriptor folder = openFolderToRead(folders_.current(), name.c_str());
        if (!folder.isOpen()) return;
        const auto identity = identifyOpen(folder.get());
        if (!identity || !identity->isOnMountOf(top_)) return;
        pending_.emplace_back();
        folders_.push(std::move(folder), *identity);
        readCurrent();
    }

    ItemIdentity top_;
    FolderStack folders_;
    std::uint64_t limit_;
    const StopToken& stop_;
    TreeSize size_;
    std::vector<std::vector<std::string>> pending_; ///< per open level, the folders still to enter
    std::set<std::uint64_t> linked_;
};

} // namespace

OsResult<TreeSize> sizeOfTree(const Place& place, std::uint64_t entryLimit, const StopToken& stop) {
    const auto item = statItem(place.folder.get(), place.name.c_str());
    if (!item) return tl::unexpected(item.error());
    if (!S_ISDIR(item->st_mode)) return TreeSize{.allocatedBytes = entrySize(*item).allocatedBytes};
    Descriptor top = openFolderToRead(place.folder.get(), place.name.c_str());
    if (!top.isOpen()) return tl::unexpected(errno);
    return SizeWalk(std::move(top), *item, entryLimit, stop).run();
}

} // namespace tidwen
