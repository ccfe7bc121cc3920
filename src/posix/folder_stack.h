#pragma once

#include "posix/item_description.h"

#include <vector>

namespace tidwen {

/// The folders from the top of a tree down to where a walk stands. Only the lowest few are kept open, so that
/// no depth uses up the process's descriptors; on the way up the others are opened again by ".." and known by
/// device and inode, so a folder moved elsewhere meanwhile cannot take the walk out of the tree.
class FolderStack {
  public:
    /// Starts with the top of the tree.
    explicit FolderStack(Descriptor top) { push(std::move(top)); }

    int current() const { return levels_.back().folder.get(); }
    std::size_t depth() const { return levels_.size(); }

    /// Goes down into an open folder. False when it cannot be identified.
    bool push(Descriptor folder);
    /// The same for one that was just identified.
    void push(Descriptor folder, const ItemIdentity& identity);
    /// Goes up one level. False when the folder above is not where it was.
    bool pop();

  private:
    struct Level {
        Descriptor folder;
        ItemIdentity identity;
    };
    std::vector<Level> levels_;
};

} // namespace tidwen
