#pragma once

#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Why it is not clear whose leftovers to look for.
struct VolumeUserError {
    enum class Kind {
        noHome,
        noMac, ///< not even a "/Users": this is another folder than a Mac's disk
        severalHomes,
        notAFolder,
        notAPath, ///< a name alone
        linked,
        notAHome
    };
    Kind kind = Kind::noHome;
    std::vector<Path> candidates; ///< of `severalHomes`
    Path home;                    ///< of those after `severalHomes`
};

/// The user of a volume: `home` when given, else the one folder of "/Users" that is a user's (not "Shared",
/// "Guest" or a hidden one; it has a "Library"). A home that is given must be a real folder, reached through
/// no link and no "..", that lies directly in "/Users" or that a person's account names as its home
/// ("/private/var/db/dslocal"): what is done in a home is done as if its owner owned all below it. The
/// per-user cache and temporary folders are the pair under
/// "/private/var/folders" that belongs to the home's owner. The homes of others are those that the accounts
/// name, as far as they may be read.
tl::expected<UserEnvironment, VolumeUserError> findVolumeUser(const FileSystem& files,
                                                              const std::optional<Path>& home);

} // namespace tidwen
