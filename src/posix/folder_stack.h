#pragma once

#include "base/descriptor.h"
#include "posix/item_description.h"

#include <vector>

namespace tidwen {

/// The open folders from the top of a tree to the current position of a walk. Only the deepest few are kept
/// open, so that depth never exhausts the process's descriptors; on the way up the others are reopened by
/// ".." and checked by device and inode, so a folder moved meanwhile cannot lead the walk out of the tree.
class FolderStack {
  public:
    /// Starts with the top of the tree.
    explicit FolderStack(Descriptor top) { push(std::move(top)); }

    int current() const { return levels_.back().folder.get(); }
    std::size_t depth() const { return levels_.size(); }

    /// Enters an open folder. False when it cannot be identified.
    bool push(Descriptor folder);
    /// The same for a folder that was just identified.
    void push(Descriptor folder, const ItemIdentity& identity);
    /// Goes up one level. False when the folder above is no longer there.
    bool pop();

  private:
    struct Level {
        Descriptor folder;
        ItemIdentity identity;
    };
    std::vector<Level> levels_;
};

} // namespace tidwen
