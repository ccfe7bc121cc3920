#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/receipts.h"
#include "platform/user_environment.h"

#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;

/// Identifiers, in lower case, of the installer packages of which something is still in use: a package lives
/// while any of its files is there, be it a link that leads nowhere. One whose application is gone does not
/// live by what the sweep would find as that application's leftovers, by the package's own identifier; else
/// what an uninstalled application leaves would keep itself. Folders do not count: packages share them.
/// Packages that `installed` claims are left out.
std::vector<std::string> listLivingPackages(const FileSystem& files, const Receipts& receipts,
                                            const UserEnvironment& user, const KnownOwners& installed,
                                            const StopToken& stop = {});

} // namespace tidwen
