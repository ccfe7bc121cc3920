#pragma once

#include "base/path.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tidwen {

/// Whose leftovers are looked for: one user of one Mac.
struct UserEnvironment {
    Path home;                           ///< "/Users/alice"
    std::uint32_t userID = 0;            ///< names the user's launchd domain ("gui/501")
    std::optional<Path> cacheFolder;     ///< "/private/var/folders/zz/…/C", when known
    std::optional<Path> temporaryFolder; ///< "/private/var/folders/zz/…/T", when known
    /// What the volume's accounts name as the homes of others, wherever they lie, links resolved as well.
    std::vector<Path> otherHomes = {};

    Path libraryFolder() const { return home / "Library"; }
    Path trash() const { return home / ".Trash"; }
};

} // namespace tidwen
