#pragma once

#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/history.h"
#include "scan/applications/app_target.h"
#include "sweep/former_names.h"

#include <string>
#include <vector>

namespace tidwen {

/// What the disk still says of applications that are no longer installed: the records of past removals, the
/// bundles in the Trash, the records of sandbox containers, and the programs of launchd jobs. Reads the disk;
/// any thread.
class FormerApplications {
  public:
    FormerApplications(const FileSystem& files, UserEnvironment user, const AppTargetLoader& loader);

    /// A target without a bundle ("/"). Its `loginItemBundleIDs` are all identifiers that its bundle
    /// embedded, because that can no longer be searched when the target is scanned. Without a recorded name,
    /// the identifier is the name; nothing is found by that.
    AppTarget describe(const std::string& bundleID) const;

  private:
    std::vector<Path> trashedBundles(const std::string& bundleID) const;
    std::string nameFromJobs(const std::string& bundleID) const;

    const FileSystem& files_;
    UserEnvironment user_;
    const AppTargetLoader& loader_;
    std::vector<RemovalHistoryEntry> runs_;
    FormerNames names_;
};

} // namespace tidwen
