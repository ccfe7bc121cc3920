#pragma once

#include <cstddef>
#include <sys/stat.h>

namespace tidwen {

/// One item of a tree: its folder, held open, its name there and what the system says of it.
struct TreeItem {
    int folder;
    const char* name;
    const struct stat& status;
};

/// For a visitor that has to get through whatever somebody made.
inline constexpr std::size_t deepestTree = 1u << 18;

/// What is done on a walk. Every call gives 0 to go on, or an errno that ends the walk; from `enter` it means
/// the same as a folder that could not be entered.
class TreeVisitor {
  public:
    virtual ~TreeVisitor() = default;
    /// Beyond this many levels folders are not entered. Each costs some hundred bytes of memory.
    virtual std::size_t deepestLevel() const { return 4096; }
    /// Anything but a folder.
    virtual int item(const TreeItem& item) = 0;
    /// A folder that may not be read: true when it may now.
    virtual bool unlock(const TreeItem&) { return false; }
    /// An item that could not be looked at, or a folder that could not be entered: 0 to go on without it.
    virtual int skipped(int fault) { return fault; }
    /// A folder, just opened.
    virtual int enter(const TreeItem&, int /*opened*/) { return 0; }
    /// The same folder when everything in it has been seen, still open.
    virtual int leave(const struct stat&, int /*opened*/) { return 0; }
    /// The same folder once more, closed, by its place.
    virtual int left(const TreeItem&) { return 0; }
};

/// Walks an item and everything below it in the order of names. Links are not followed. What is mounted at
/// the item or below it, be it the same disk once more, is EXDEV, a tree that is rearranged meanwhile ESTALE,
/// one of more levels than the visitor takes ENAMETOOLONG. 0 or the errno.
int walkTree(int folder, const char* name, TreeVisitor& visitor);

} // namespace tidwen
