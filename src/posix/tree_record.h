#pragma once

#include "base/descriptor.h"
#include "posix/item_description.h"

#include <cstdint>
#include <sys/stat.h>
#include <vector>

namespace tidwen {

/// The items of a tree and their state, to detect concurrent modification.
class TreeRecord {
  public:
    /// Also checks that all of it can be removed: EPERM when an item has a flag against that, EACCES when a
    /// folder's permissions forbid it.
    static OsResult<TreeRecord> of(int folder, const char* name);

    bool holdsFolder(ino_t inode) const;

    /// Whether an item other than a folder is recorded with its present content.
    bool holds(const struct stat& item) const;

    friend bool operator==(const TreeRecord&, const TreeRecord&) = default;

  private:
    struct Entry {
        ino_t inode;
        mode_t mode;
        off_t size;
        std::int64_t modified;
        std::int64_t changed; ///< 0 for the top, which is renamed in between
        friend bool operator==(const Entry&, const Entry&) = default;
    };
    class Visitor;
    std::vector<Entry> entries_; ///< by inode
};

} // namespace tidwen
