#pragma once

#include "base/path.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/job_program.h"
#include "scan/applications/launch_item.h"
#include "system/startup_item.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// Lists every job that can start on its own with its owner. Slow; not for the main thread.
class StartupItemScanner {
  public:
    struct Directory {
        Path url;
        bool isSystemDomain = false;
    };

    /// Whether the system knows an application with this identifier.
    using IsRegistered = std::function<bool(const std::string& bundleID)>;

    StartupItemScanner(const FileSystem& files, UserEnvironment user, InstalledBundles& installed,
                       IsRegistered isRegistered)
        : files_(files),
          user_(std::move(user)),
          installed_(installed),
          isRegistered_(std::move(isRegistered)) {}

    /// Lists the installed applications, reading only through these files.
    using Inventory = std::function<std::vector<InstalledApp>(const FileSystem& files)>;

    /// The embedded jobs of the inventory are listed; other bundles may own jobs, too. One budget limits all
    /// that is read; when not all owners could be examined, no job is reported as `missing` its application.
    /// `locale` orders the labels.
    StartupScanResult scan(const Inventory& inventory, const std::string& locale = "en") const;

    StartupItem::Owner attributeOwner(const std::string& label, const std::optional<std::string>& programPath,
                                      const std::vector<InstalledApp>& apps) const;

    /// The user's agents, the machine's agents, the machine's daemons. The machine's agents run in each
    /// user's session, so they do not belong to the system domain.
    static std::vector<Directory> directories(const UserEnvironment& user);

  private:
    class Owners;
    class Run;
    StartupItem::Owner attributeOwner(const std::string& label, const std::optional<std::string>& programPath,
                                      const Owners& owners, JobPrograms& programs) const;

    const FileSystem& files_;
    UserEnvironment user_;
    InstalledBundles& installed_;
    IsRegistered isRegistered_;
};

} // namespace tidwen
