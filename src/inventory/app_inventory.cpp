#include "inventory/app_inventory.h"

#include "base/parallel.h"
#include "base/path.h"
#include "base/text.h"
#include "inventory/installed_applications.h"
#include "inventory/usage_probe.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "scan/applications/app_target.h"
#include "scan/applications/launch_item.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tidwen {
namespace {

// Enough for any application; limits an endless bundle.
constexpr std::uint64_t bundleEntryLimit = 500'000;

/// Delivers results in the order of their indices, in whatever order the threads finish.
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

bool holdsBundles(const FileSystem& files, const Path& folder) {
    const auto entries = files.list(folder);
    return entries && std::any_of(entries->begin(), entries->end(), [](const DirectoryEntry& entry) {
               return Path("/" + entry.name).lowercasedExtension() == "app";
           });
}

void sortForDisplay(std::vector<InstalledApp>& apps, const std::string& locale) {
    std::stable_sort(apps.begin(), apps.end(), [&](const auto& a, const auto& b) {
        return compareForDisplay(a.name, b.name, locale) < 0;
    });
}

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

void AppInventory::complete(const FileSystem& files, InstalledApp& app,
                            const std::vector<std::pair<std::string, std::string>>& jobs) const {
    const auto bundleID = lowercased(app.bundleID);
    const auto belongs = [&](const auto& job) {
        const auto& [label, program] = job;
        return label == bundleID || label.starts_with(bundleID + ".")
               || (!program.empty() && Path(program).isWithin(app.url));
    };
    const auto library = app.url / "Contents/Library";
    app.hasResidentHelper = std::any_of(jobs.begin(), jobs.end(), belongs)
                            || !listLaunchItems(files, library / "LaunchAgents", false).empty()
                            || !listLaunchItems(files, library / "LaunchDaemons", true).empty()
                            || holdsBundles(files, library / "LoginItems");
    app.usage = probeUsage(files, ports_.running, ports_.usageRecords, user_, app);
}

/// Loads what earlier launches found, once.
void AppInventory::recall() {
    if (std::exchange(isRecalled_, true) || !memory_) return;
    auto apps = memory_->read();
    const std::lock_guard lock(mutex_);
    known_ = std::move(apps);
}

void AppInventory::fillInKnown(InstalledApp& app) {
    const auto changed = changeDate(app.url);
    const std::lock_guard lock(mutex_);
    const auto known = known_.find(app.url);
    if (known == known_.end() || known->second.changed != changed) return;
    app.sizeBytes = known->second.bytes;
    app.isSizePartial = known->second.isPartial;
    if (known->second.usage)
        app.usage = AppUsage{.evidence = *known->second.usage, .useCount = std::nullopt, .isRunning = false};
}

std::vector<InstalledApp> AppInventory::build(const StopToken& stop, const OnApp& onApp,
                                              const std::string& locale) {
    const BudgetedFiles files(ports_.files);
    const BudgetedSignatures signatures(ports_.signatures, files.budget());
    recall();
    MissedApplications missed;
    const auto bundles = findApplicationBundles(ports_.files, user_, &missed);
    unreadable_ = std::move(missed.unreadable);
    InOrder results(bundles.size(), onApp);
    parallelFor(bundles.size(), [&](std::size_t index) {
        auto app = stop.stopRequested() ? std::nullopt : makeInstalledApp(files, signatures, bundles[index]);
        if (app) fillInKnown(*app);
        results.put(index, std::move(app));
    });
    auto apps = results.take();
    const auto jobs = launchJobs(files, stop);
    parallelFor(apps.size(), [&](std::size_t index) {
        if (!stop.stopRequested()) complete(files, apps[index], jobs);
    });
    leftOut_ = missed.leftOut + files.budget().leftOut();
    sortForDisplay(apps, locale);
    return apps;
}

/// The newest modification time of the bundle's own folders and its Info.plist: an update replaces at least
/// one of them.
std::int64_t AppInventory::changeDate(const Path& bundle) const {
    std::int64_t newest = 0;
    for (const auto& place :
         {bundle, bundle / "Contents", bundle / "Contents/Info.plist", bundle / "Contents/MacOS"})
        if (const auto info = ports_.files.info(place)) newest = std::max(newest, info->modifiedNanoseconds);
    return newest;
}

void AppInventory::measure(std::vector<InstalledApp>& apps, const StopToken& stop, const OnSize& onSize) {
    std::vector<std::int64_t> dates(apps.size());
    parallelFor(apps.size(), [&](std::size_t index) {
        auto& app = apps[index];
        if (stop.stopRequested()) return;
        dates[index] = dateOfSize(app);
        if (app.sizeBytes) return;
        const auto size = ports_.files.treeSize(app.url, bundleEntryLimit, stop);
        if (!size || stop.stopRequested()) return;
        app.sizeBytes = static_cast<std::int64_t>(size->allocatedBytes);
        app.isSizePartial = size->capped;
        const std::lock_guard lock(mutex_);
        if (onSize) onSize(app);
    });
    if (!stop.stopRequested()) keepKnown(apps, dates);
}

/// The bundle's date to which the known or next measured size belongs: a bundle that changes meanwhile is
/// measured again.
std::int64_t AppInventory::dateOfSize(const InstalledApp& app) {
    {
        const std::lock_guard lock(mutex_);
        if (const auto known = known_.find(app.url); app.sizeBytes && known != known_.end())
            return known->second.changed;
    }
    return changeDate(app.url);
}

/// Stores only applications that exist now and drops those that are gone.
void AppInventory::keepKnown(const std::vector<InstalledApp>& apps, const std::vector<std::int64_t>& dates) {
    KnownApps found;
    for (std::size_t i = 0; i < apps.size(); ++i)
        found.emplace(apps[i].url,
                      KnownApp{dates[i], apps[i].sizeBytes,
                               apps[i].usage ? std::optional(apps[i].usage->evidence) : std::nullopt,
                               apps[i].isSizePartial});
    {
        const std::lock_guard lock(mutex_);
        if (found == known_) return;
        known_ = found;
    }
    if (memory_) (void)memory_->store(found); // on failure it is determined again at the next launch
}

std::set<std::string> AppInventory::running(const std::vector<SharedApp>& apps) const {
    std::set<std::string> found;
    for (const auto& app : apps)
        if (ports_.running.isRunning(app->bundleID)) found.insert(app->bundleID);
    return found;
}

} // namespace tidwen
