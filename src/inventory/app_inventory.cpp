#include "inventory/app_inventory.h"

#include "base/parallel.h"
#include "base/text.h"
#include "inventory/installed_applications.h"
#include "inventory/usage_probe.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "scan/applications/app_target.h"
#include "scan/applications/launch_item.h"

#include <algorithm>
#include <optional>

namespace tidwen {
namespace {

// Enough for any application; a bundle made to have no end stops here.
constexpr std::uint64_t bundleEntryLimit = 500'000;

/// Hands results over in the order of their indices, however their threads finish.
class InOrder {
  public:
    InOrder(std::size_t count, const AppInventory::OnApp& deliver) : results_(count), deliver_(deliver) {}

    void put(std::size_t index, std::optional<InstalledApp> app) {
        const std::lock_guard lock(mutex_);
        results_[index] = {true, std::move(app)};
        for (; next_ < results_.size() && results_[next_].isThere; ++next_)
            if (deliver_ && results_[next_].app) deliver_(*results_[next_].app);
    }

    std::vector<InstalledApp> take() {
        std::vector<InstalledApp> apps;
        for (auto& result : results_)
            if (result.app) apps.push_back(std::move(*result.app));
        return apps;
    }

  private:
    struct Result {
        bool isThere = false;
        std::optional<InstalledApp> app;
    };
    std::mutex mutex_;
    std::vector<Result> results_;
    std::size_t next_ = 0;
    const AppInventory::OnApp& deliver_;
};

} // namespace

/// Label and program of every job outside the bundles.
std::vector<std::pair<std::string, std::string>> AppInventory::launchJobs(const FileSystem& files,
                                                                          const StopToken& stop) const {
    std::vector<std::pair<std::string, std::string>> jobs;
    for (const auto& folder : {user_.libraryFolder() / "LaunchAgents", Path("/Library/LaunchAgents"),
                               Path("/Library/LaunchDaemons")})
        for (const auto& item : listLaunchItems(files, folder, false, stop))
            jobs.emplace_back(lowercased(item.label), item.programPath.value_or(""));
    return jobs;
}

InstalledApp AppInventory::complete(const FileSystem& files, InstalledApp app,
                                    const std::vector<std::pair<std::string, std::string>>& jobs) const {
    const auto bundleID = lowercased(app.bundleID);
    const auto belongs = [&](const auto& job) {
        const auto& [label, program] = job;
        return label == bundleID || label.starts_with(bundleID + ".")
               || (!program.empty() && Path(program).isWithin(app.url));
    };
    const auto library = app.url / "Contents/Library";
    app.hasResidentHelper =
        std::any_of(jobs.begin(), jobs.end(), belongs)
        || !listLaunchItems(files, library / "LaunchAgents", false).empty()
        || !listLaunchItems(files, library / "LaunchDaemons", true).empty()
        || !files.list(library / "LoginItems").value_or(std::vector<DirectoryEntry>()).empty();
    app.usage = probeUsage(files, ports_.running, user_, app);
    return app;
}

std::vector<InstalledApp> AppInventory::build(const StopToken& stop, const OnApp& onApp) {
    const BudgetedFiles files(ports_.files);
    const BudgetedSignatures signatures(ports_.signatures, files.budget());
    const auto bundles = findApplicationBundles(ports_.files, user_, &unreadable_);
    const auto jobs = launchJobs(files, stop);
    InOrder results(bundles.size(), onApp);
    parallelFor(bundles.size(), [&](std::size_t index) {
        if (stop.stopRequested()) return results.put(index, std::nullopt);
        auto app = makeInstalledApp(files, signatures, bundles[index]);
        results.put(index, app ? std::optional(complete(files, std::move(*app), jobs)) : std::nullopt);
    });
    auto apps = results.take();
    leftOut_ = files.budget().leftOut();
    {
        const std::lock_guard lock(mutex_);
        for (auto& app : apps)
            if (const auto known = sizes_.find(app.url);
                known != sizes_.end() && known->second.changed == changeDate(app.url))
                app.sizeBytes = known->second.bytes;
    }
    std::stable_sort(apps.begin(), apps.end(),
                     [](const auto& a, const auto& b) { return compareForDisplay(a.name, b.name) < 0; });
    return apps;
}

/// The newest date of the bundle's own folders and its Info.plist: an update replaces at least one of them.
std::int64_t AppInventory::changeDate(const Path& bundle) const {
    std::int64_t newest = 0;
    for (const auto& place :
         {bundle, bundle / "Contents", bundle / "Contents/Info.plist", bundle / "Contents/MacOS"})
        if (const auto info = ports_.files.info(place)) newest = std::max(newest, info->modifiedNanoseconds);
    return newest;
}

void AppInventory::measure(std::vector<InstalledApp>& apps, const StopToken& stop, const OnSize& onSize) {
    parallelFor(apps.size(), [&](std::size_t index) {
        auto& app = apps[index];
        if (app.sizeBytes || stop.stopRequested()) return;
        const auto changed = changeDate(app.url);
        const auto size = ports_.files.treeSize(app.url, bundleEntryLimit, stop);
        if (!size || stop.stopRequested()) return;
        app.sizeBytes = static_cast<std::int64_t>(size->allocatedBytes);
        const std::lock_guard lock(mutex_);
        sizes_[app.url] = {changed, *app.sizeBytes};
        if (onSize) onSize(app.url, *app.sizeBytes);
    });
}

} // namespace tidwen
