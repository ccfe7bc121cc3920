#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <vector>

namespace tidwen {

/// A folder below which bundles are looked for.
struct BundlePlace {
    Path folder;
    int depth = 0;           ///< number of folder levels below it that are searched
    bool isOptional = false; ///< belongs to another user, so it is not reported when unreadable
    int linkDepth = 0;       ///< number of levels, its own the first, in which links to folders are followed
    int furtherDepth =
        0; ///< levels below `depth` that are searched up to a limit, without reporting what lies beyond it
    bool isCountedOut = false; ///< folders deeper than that are reported
    bool isHome = false; ///< its hidden folders (the Trash, tools' caches) and its Library are not searched
};

/// The user's home, then the other homes on this disk. A folder of homes that could not be listed is added to
/// `unreadable`.
std::vector<Path> homesOnDisk(const FileSystem& files, const UserEnvironment& user,
                              std::vector<Path>& unreadable);

/// All such folders of this Mac, application folders first; they need not exist. Folders of homes that could
/// not be listed, and Library folders that may not be, are added to `unreadable`.
std::vector<BundlePlace> bundlePlaces(const FileSystem& files, const UserEnvironment& user,
                                      std::vector<Path>& unreadable);

} // namespace tidwen
