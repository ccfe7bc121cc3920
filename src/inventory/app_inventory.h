#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "inventory/known_apps.h"
#include "platform/applications.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/usage_records.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

/// The installed applications with what the home grid shows of each.
///
/// Several threads read bundles, but results are delivered in a fixed order, so a list can be shown while it
/// grows. An application that moves or disappears meanwhile is left out. Calls block; any thread, one at a
/// time.
class AppInventory {
  public:
    struct Ports {
        const FileSystem& files;
        const CodeSignatures& signatures;
        const RunningApplications& running;
        const UsageRecords* usageRecords = nullptr; ///< null on a volume
    };
    using OnApp = std::function<void(const InstalledApp&)>;
    using OnSize = std::function<void(const InstalledApp&)>;

    /// `memory`: where sizes and last use are stored between launches.
    AppInventory(Ports ports, UserEnvironment user, std::optional<KnownAppsFile> memory = std::nullopt)
        : ports_(ports), user_(std::move(user)), memory_(std::move(memory)) {}

    /// Every application with its usage and resident helper, sorted by name in the order of `locale`; known
    /// sizes are filled in. Calls `onApp` as soon as a bundle is read, one call at a time, in order of the
    /// bundles' paths: its usage is then the stored one, and its helper is not yet determined. Returns early
    /// with partial results when `stop` asks for it.
    std::vector<InstalledApp> build(const StopToken& stop = {}, const OnApp& onApp = {},
                                    const std::string& locale = "en");

    /// Files and folders that the last `build` did not read because its budget was exhausted, and
    /// applications beyond the number that is listed.
    std::uint64_t leftOut() const { return leftOut_; }

    /// Folders that the last `build` could not list; they may contain more applications.
    const std::vector<Path>& unreadable() const { return unreadable_; }

    /// Measures the bundles whose size is not known or whose content changed. `onSize` gets each that was
    /// measured, from any thread, one call at a time. What was found out is kept for the next start.
    void measure(std::vector<InstalledApp>& apps, const StopToken& stop = {}, const OnSize& onSize = {});

    /// Identifiers of the applications that are running.
    std::set<std::string> running(const std::vector<SharedApp>& apps) const;

  private:
    void recall();
    void fillInKnown(InstalledApp& app);
    std::int64_t dateOfSize(const InstalledApp& app);
    void keepKnown(const std::vector<InstalledApp>& apps, const std::vector<std::int64_t>& dates);
    void complete(const FileSystem& files, InstalledApp& app,
                  const std::vector<std::pair<std::string, std::string>>& jobs) const;
    std::vector<std::pair<std::string, std::string>> launchJobs(const FileSystem& files,
                                                                const StopToken& stop) const;
    std::int64_t changeDate(const Path& bundle) const;

    Ports ports_;
    UserEnvironment user_;
    std::optional<KnownAppsFile> memory_;
    bool isRecalled_ = false;
    std::mutex mutex_; ///< guards `known_`
    KnownApps known_;
    std::uint64_t leftOut_ = 0;
    std::vector<Path> unreadable_;
};

} // namespace tidwen
