#pragma once

#include "base/path.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/other_applications.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// Where `findApplicationBundles` may have missed applications.
struct MissedApplications {
    std::vector<Path> unreadable; ///< folders that could not be listed
    std::uint64_t leftOut = 0;    ///< bundles and folders beyond the 5,000 of each that are listed
};

/// Bundles in /Applications (subfolders to depth 2), the home's Applications, and applications nested in
/// suites' folders; sorted by path. Excludes the Trash and the insides of bundles. `missed`, unless null,
/// receives what may contain others.
std::vector<Path> findApplicationBundles(const FileSystem& files, const UserEnvironment& user,
                                         MissedApplications* missed = nullptr);

/// Name and identifier of each bundle, including Apple's, which own their data too. Read in parallel.
std::vector<InstalledIdentity> readIdentities(const FileSystem& files, const std::vector<Path>& bundles);

/// The same from one snapshot; bundles it does not contain are left out.
std::vector<InstalledIdentity> identitiesOf(const BundleSnapshot& snapshot, const std::vector<Path>& bundles);

/// The rows of the inventory, sorted by name in display order. Refused bundles are left out.
std::vector<InstalledApp> listInstalledApps(const FileSystem& files, const CodeSignatures& signatures,
                                            const std::vector<Path>& bundles);

} // namespace tidwen
