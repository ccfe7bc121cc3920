#pragma once

#include <cstddef>
#include <sys/stat.h>

namespace tidwen {

/// One item of a tree: its folder, held open, its name and its status.
struct TreeItem {
    int folder;
    const char* name;
    const struct stat& status;
};

/// Limit for visitors that must handle trees of any depth, hostile ones included.
inline constexpr std::size_t deepestTree = 1u << 18;

/// The callbacks of a walk. Each returns 0 to continue or an errno that ends the walk; an errno of `enter` is
/// handled like a folder that could not be entered.
class TreeVisitor {
  public:
    virtual ~TreeVisitor() = default;
    /// Folders below this depth are not entered. Each level costs some hundred bytes of memory.
    virtual std::size_t deepestLevel() const { return 4096; }
    /// Anything but a folder.
    virtual int item(const TreeItem& item) = 0;
    /// A folder that may not be read; returns true when it now may.
    virtual bool unlock(const TreeItem&) { return false; }
    /// An item that could not be inspected or a folder that could not be entered; return 0 to continue
    /// without it.
    virtual int skipped(int fault) { return fault; }
    /// A folder, just opened.
    virtual int enter(const TreeItem&, int /*opened*/) { return 0; }
    /// The same folder after everything in it has been visited, still open.
    virtual int leave(const struct stat&, int /*opened*/) { return 0; }
    /// The same folder once more, closed, by its place.
    virtual int left(const TreeItem&) { return 0; }
};

/// Walks an item and everything below it in name order. Links are not followed. EXDEV for anything mounted at
/// or below the item, even the same disk again; ESTALE when the tree is rearranged meanwhile; ENAMETOOLONG
/// for more levels than the visitor allows. Returns 0 or the errno.
int walkTree(int folder, const char* name, TreeVisitor& visitor);

} // namespace tidwen
