#pragma once

#include "base/descriptor.h"
#include "platform/file_system.h"

#include <optional>
#include <string>
#include <utility>

namespace tidwen {

/// Whether a symbolic link as a path's last component is meant itself or stands for what it leads to.
enum class LastLink { keep, follow };

/// An item as the folder that holds it, kept open, and its name there: no link further up can change which
/// item is touched. The name is "." when the path ends in the root, "." or "..".
struct Place {
    Descriptor folder;
    std::string name;
};

/// Finds Mac paths below a root folder and never leaves it: an absolute link starts again at the root, ".."
/// stays below it. Holds the root open. Calls may come from any thread.
///
/// A path that is not absolute or holds a NUL byte is `missing`: the kernel would see another one.
class RootResolver {
  public:
    enum class Way { kernel, walk };

    /// Takes over an open folder. `Way::kernel` only where `kernelResolves` said yes.
    RootResolver(Descriptor root, Way way) : root_(std::move(root)), way_(way) {}

    /// Whether the kernel has the call that resolves inside a root, and lets this process use it.
    static bool kernelResolves(int root);

    /// Whether a path can be given to the system at all: absolute and without a NUL byte.
    static bool canName(const Path& path);

    Way way() const { return way_; }

    /// Opens an item for reading with the flags of open(2), to which O_CLOEXEC is added.
    FileResult<Descriptor> open(const Path& path, int flags, LastLink last) const;

    /// Finds an item's place, following the links of its parents (and its own with `LastLink::follow`). The
    /// item need not exist with `LastLink::keep`.
    FileResult<Place> place(const Path& path, LastLink last) const;

    /// The same for a call that changes the disk: a link or ".." among the parents is `throughLink`. The
    /// root itself has no place that could be changed: `denied`.
    FileResult<Place> placeForChange(const Path& path) const;

    /// Looks for items below one folder, which is found and opened once.
    class LooksBelow {
      public:
        explicit LooksBelow(Descriptor folder) : folder_(std::move(folder)) {}
        /// Whether the item of this relative path is there. Nothing where a link on the way, or something
        /// else, keeps it from being told without going through the root.
        std::optional<bool> isThere(const std::string& item) const;

      private:
        Descriptor folder_;
    };
    /// Nothing where the kernel cannot, or the folder cannot be opened.
    std::optional<LooksBelow> looksBelow(const Path& folder) const;

    /// The path without any link.
    FileResult<Path> resolve(const Path& path) const;

  private:
    Descriptor root_;
    Way way_;
};

/// Opens a folder by its name in another one: never a link, never for more than looking things up in it.
Descriptor openFolderToSearch(int folder, const char* name);

} // namespace tidwen
