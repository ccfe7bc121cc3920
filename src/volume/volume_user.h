#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Why the user of the volume cannot be determined.
struct VolumeUserError {
    enum class Kind {
        noHome,
        noMac, ///< not even a "/Users": this is another folder than a Mac's disk
        severalHomes,
        notAFolder,
        notAPath, ///< a name alone
        linked,
        indirect, ///< with ".." in its path
        notAHome
    };
    Kind kind = Kind::noHome;
    std::vector<Path> candidates; ///< of `severalHomes`
    Path home;                    ///< of those after `severalHomes`
};

/// The user of a volume: `home` if given, else the only user folder in "/Users" (not "Shared", "Guest" or a
/// hidden one; it has a "Library"). A given home must be a real folder, reached without links and "..",
/// directly in "/Users" or named as home by a person's account ("/private/var/db/dslocal"), because
/// everything below a home is treated as its owner's. The per-user cache and temporary folders are the pair
/// under "/private/var/folders" that belongs to the home's owner. Homes of others are those named by the
/// accounts, as far as they are readable.
tl::expected<UserEnvironment, VolumeUserError> findVolumeUser(const FileSystem& files,
                                                              const std::optional<Path>& home);

} // namespace tidwen
