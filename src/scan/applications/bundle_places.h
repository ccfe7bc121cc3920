#pragma once

#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <vector>

namespace tidwen {

/// A folder below which bundles are looked for.
struct BundlePlace {
    Path folder;
    int depth = 0;           ///< how many levels of folders below it are searched
    bool isOptional = false; ///< private by nature: of another user, so it is not missed when unreadable
    int linkDepth = 0;       ///< in how many levels, its own the first, links to folders are followed, too
    int furtherDepth = 0; ///< levels below `depth` that are searched as far as a bound goes, and not missed
    bool isCountedOut = false; ///< folders deeper than that are missed
    bool isHome = false;       ///< its hidden folders (the Trash, tools' caches) and Library are not searched
};

/// The user's home first, then those of others that are on this disk. A folder of homes that could not be
/// listed is added to `unreadable`.
std::vector<Path> homesOnDisk(const FileSystem& files, const UserEnvironment& user,
                              std::vector<Path>& unreadable);

/// All such folders of this Mac, those of applications first; they need not exist. Folders of homes that
/// could not be listed, and Library folders that may not be, are added to `unreadable`.
std::vector<BundlePlace> bundlePlaces(const FileSystem& files, const UserEnvironment& user,
                                      std::vector<Path>& unreadable);

} // namespace tidwen
