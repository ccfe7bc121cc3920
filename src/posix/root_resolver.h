#pragma once

#include "base/descriptor.h"
#include "base/path.h"
#include "platform/file_system.h"

#include <optional>
#include <string>
#include <utility>

namespace tidwen {

/// Whether a symbolic link as last component is kept or followed.
enum class LastLink { keep, follow };

/// An item as its parent folder, held open, and its name in it: no link further up can change which item is
/// used. The name is "." when the path ends in the root, "." or "..".
struct Place {
    Descriptor folder;
    std::string name;
};

/// Resolves Mac paths below a root folder without ever leaving it: an absolute link starts again at the root,
/// ".." stays below it. Holds the root open. Thread-safe.
///
/// A path that is not absolute or contains a NUL byte is `missing`: the kernel would see a different one.
class RootResolver {
  public:
    enum class Way { kernel, walk };

    /// Takes ownership of an open folder. `Way::kernel` only if `kernelResolves` returned true.
    RootResolver(Descriptor root, Way way) : root_(std::move(root)), way_(way) {}

    /// Whether the kernel can resolve inside a root and permits this process to use the call.
    static bool kernelResolves(int root);

    /// Whether a path can be passed to the system: absolute and without a NUL byte.
    static bool canName(const Path& path);

    Way way() const { return way_; }

    /// Opens an item for reading with the given flags of open(2) and O_CLOEXEC.
    FileResult<Descriptor> open(const Path& path, int flags, LastLink last) const;

    /// Finds an item's place, following the links of its parents (and its own with `LastLink::follow`). With
    /// `LastLink::keep` the item need not exist.
    FileResult<Place> place(const Path& path, LastLink last) const;

    /// The same for a call that changes the disk: a link or ".." among the parents is `throughLink`. The root
    /// itself is `denied`, because it has no parent here.
    FileResult<Place> placeForChange(const Path& path) const;

    /// Looks up items below one folder, which is resolved and opened once.
    class LooksBelow {
      public:
        explicit LooksBelow(Descriptor folder) : folder_(std::move(folder)) {}
        /// Whether the item of this relative path exists. nullopt where a link on the path, or another
        /// obstacle, requires a lookup from the root.
        std::optional<bool> isThere(const std::string& item) const;

      private:
        Descriptor folder_;
    };
    /// nullopt where the kernel lacks the call or the folder cannot be opened.
    std::optional<LooksBelow> looksBelow(const Path& folder) const;

    /// The path of an existing item with all links resolved; if nothing exists there, the error carries it.
    FileResult<Path> resolve(const Path& path) const;

  private:
    Descriptor root_;
    Way way_;
};

/// Opens an entry of a folder for lookups only; never follows a link.
Descriptor openFolderToSearch(int folder, const char* name);

} // namespace tidwen
