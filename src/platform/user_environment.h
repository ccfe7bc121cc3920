#pragma once

#include "base/path.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tidwen {

/// The user, on one Mac, whose leftovers are searched.
struct UserEnvironment {
    Path home;                           ///< "/Users/alice"
    std::uint32_t userID = 0;            ///< identifies the user's launchd domain ("gui/501")
    std::optional<Path> cacheFolder;     ///< "/private/var/folders/zz/…/C", when known
    std::optional<Path> temporaryFolder; ///< "/private/var/folders/zz/…/T", when known
    /// Homes of other users as named by the volume's accounts, wherever they are; links resolved as well.
    std::vector<Path> otherHomes = {};
    /// The Mac is the one that runs this process: its privacy settings decide what may be opened.
    bool isOnRunningMac = false;

    Path libraryFolder() const { return home / "Library"; }
    Path trash() const { return home / ".Trash"; }
};

} // namespace tidwen
