#pragma once

#include "base/stop_token.h"
#include "inventory/known_apps.h"
#include "platform/applications.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
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

/// The applications that are installed, with what the home grid shows of each.
///
/// Bundles are read by several threads at once and handed over in one order, so a list can be shown while it
/// grows. An application that moves or vanishes meanwhile is left out. Calls block; any thread, one at a
/// time.
class AppInventory {
  public:
    struct Ports {
        const FileSystem& files;
        const CodeSignatures& signatures;
        const RunningApplications& running;
    };
    using OnApp = std::function<void(const InstalledApp&)>;
    using OnSize = std::function<void(const InstalledApp&)>;

    /// `memory`: where sizes and last use are kept between starts.
    AppInventory(Ports ports, UserEnvironment user, std::optional<KnownAppsFile> memory = std::nullopt)
        : ports_(ports), user_(std::move(user)), memory_(std::move(memory)) {}

    /// Every application with its usage and resident helper, sorted by name as `locale` orders it; sizes
    /// known from before are filled in. `onApp` is called from one thread at a time, in the order of the
    /// bundles' paths, as soon as a bundle is read: its usage is then what was known before, and its helper
    /// is not looked for yet. Ends early, with what it has, when `stop` asks for it.
    std::vector<InstalledApp> build(const StopToken& stop = {}, const OnApp& onApp = {},
                                    const std::string& locale = "en");

    /// Files and folders that the last `build` did not read, because the disk holds too much to read.
    std::uint64_t leftOut() const { return leftOut_; }

    /// Folders that the last `build` could not list; they may hold more applications.
    const std::vector<Path>& unreadable() const { return unreadable_; }

    /// Measures the bundles whose size is not known or whose content changed. `onSize` gets each that was
    /// measured, from any thread, one call at a time. What was found out is kept for the next start.
    void measure(std::vector<InstalledApp>& apps, const StopToken& stop = {}, const OnSize& onSize = {});

    /// Which of the applications run now, by identifier.
    std::set<std::string> running(const std::vector<InstalledApp>& apps) const;

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
