#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/receipts.h"
#include "platform/user_environment.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;

/// Installer packages, by identifier in lower case.
struct LivingPackages {
    std::vector<std::string> identifiers; ///< some of their files are still in use
    std::set<std::string> lost;           ///< they installed an application, and none of their files exists
    std::vector<Path> unreadable = {};    ///< unreadable parts of the receipts, whose files may exist
    /// Their property lists, when the list of files beside it is missing: what they installed is not known.
    std::map<std::string, Path> unlisted = {};
};

/// A package is in use while any of its files exists, including a broken link, or may exist: on a missing
/// disk, in a missing home, or in an unreadable list. Whether one without a list is in use cannot be known.
/// If its application is gone, items that the sweep would find as that application's leftovers by the
/// package's own identifier do not count; otherwise the leftovers of an uninstalled application would keep
/// themselves in use. Folders do not count, because packages share them. Packages claimed by `installed` are
/// left out.
LivingPackages listLivingPackages(const FileSystem& files, const Receipts& receipts,
                                  const UserEnvironment& user, const KnownOwners& installed,
                                  const StopToken& stop = {});

} // namespace tidwen
