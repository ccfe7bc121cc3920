#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/receipts.h"
#include "platform/user_environment.h"

#include <set>
#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;

/// Installer packages, by their identifiers in lower case.
struct LivingPackages {
    std::vector<std::string> identifiers; ///< something of them is still in use
    std::set<std::string> lost;           ///< they installed an application, and none of their files is there
    std::vector<Path> unreadable = {};    ///< what of the receipts cannot be read: whose files may be there
};

/// A package lives while any of its files is there, be it a link that leads nowhere, or may be: on a disk or
/// in a home that is not here, or in a list that cannot be read. One whose application is gone does not live
/// by what the sweep would find as that application's leftovers, by the package's own identifier; else what
/// an uninstalled application leaves would keep itself. Folders do not count: packages share them. Packages
/// that `installed` claims are left out.
LivingPackages listLivingPackages(const FileSystem& files, const Receipts& receipts,
                                  const UserEnvironment& user, const KnownOwners& installed,
                                  const StopToken& stop = {});

} // namespace tidwen
