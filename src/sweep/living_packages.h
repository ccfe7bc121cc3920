#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/receipts.h"
#include "platform/user_environment.h"

#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;

/// Identifiers, in lower case, of the installer packages of which something is still in use. A package
/// without an application lives while any of its files is there. One whose applications are gone lives by
/// what it put outside the places where applications leave things, and by its bundles. Folders do not count:
/// packages share them. Packages that `installed` claims are left out.
std::vector<std::string> listLivingPackages(const FileSystem& files, const Receipts& receipts,
                                            const UserEnvironment& user, const KnownOwners& installed,
                                            const StopToken& stop = {});

} // namespace tidwen
