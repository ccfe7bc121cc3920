#include "removal/former_applications.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/file_system.h"
#include "quarantine/manifest.h"
#include "scan/applications/bundle.h"
#include "scan/applications/container_identity.h"
#include "scan/applications/launch_item.h"
#include "sweep/orphan_candidates.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tidwen {

namespace {

/// Each one requires reading a property list.
constexpr std::size_t mostTrashedBundles = 1'000;

bool namesApplication(const std::string& path) {
    return Path(path).lowercasedExtension() == "app";
}

void sortUnique(std::vector<std::string>& texts) {
    std::ranges::sort(texts);
    texts.erase(std::ranges::unique(texts).begin(), texts.end());
}

void addBundle(const FileSystem& files, const AppTarget& bundle, AppTarget& target) {
    target.name = bundle.name;
    target.teamID = bundle.teamID;
    target.executableName = bundle.executableName;
    target.appGroups = bundle.appGroups;
    auto& helpers = target.loginItemBundleIDs = bundle.loginItemBundleIDs;
    for (auto& embedded : embeddedBundleIDs(files, bundle.bundleURL))
        helpers.push_back(std::move(embedded));
    for (const auto& job : bundle.embeddedLaunchdItems)
        helpers.push_back(job.label);
    sortUnique(helpers);
}

} // namespace

FormerApplications::FormerApplications(const FileSystem& files, UserEnvironment user,
                                       const AppTargetLoader& loader)
    : files_(files),
      user_(std::move(user)),
      loader_(loader),
      runs_(loadHistory(user_, files_, false)),
      names_(formerNames(files_, runs_)) {}

AppTarget FormerApplications::describe(const std::string& bundleID) const {
    const auto lower = lowercased(bundleID);
    AppTarget target{.bundleURL = Path("/"), .bundleID = bundleID};
    for (const auto& place : trashedBundles(lower))
        if (const auto bundle = loader_.load(place); bundle && lowercased(bundle->bundleID) == lower) {
            addBundle(files_, *bundle, target);
            break;
        }
    const Path container = user_.libraryFolder() / "Containers" / bundleID;
    if (const auto owner = containerOwner(files_, container); owner && lowercased(*owner) == lower)
        for (auto& group : containerGroups(files_, container))
            target.appGroups.push_back(std::move(group));
    sortUnique(target.appGroups);
    if (target.name.empty()) target.name = formerName(names_, lower);
    if (target.name.empty()) target.name = nameFromJobs(lower);
    if (target.name.empty()) target.name = bundleID;
    return target;
}

/// Of the application whose bundle held the program of one of its jobs.
std::string FormerApplications::nameFromJobs(const std::string& bundleID) const {
    for (const auto& folder : {user_.libraryFolder() / "LaunchAgents", Path("/Library/LaunchAgents"),
                               Path("/Library/LaunchDaemons")})
        for (const auto& job : listLaunchItems(files_, folder, false)) {
            const auto label = lowercased(job.label);
            if (label != bundleID && !label.starts_with(bundleID + ".")) continue;
            if (auto name = applicationInPath(job.programPath.value_or("")); !name.empty()) return name;
        }
    return {};
}

/// In quarantine, newest first, and where the user put them.
std::vector<Path> FormerApplications::trashedBundles(const std::string& bundleID) const {
    std::vector<Path> bundles;
    for (const auto& run : runs_)
        for (const auto& entry : run.manifest.entries)
            if (entry.kind == ManifestEntryKind::move && entry.destination && namesApplication(entry.source)
                && lowercased(entry.bundleID) == bundleID)
                bundles.emplace_back(*entry.destination);
    const auto trashed = files_.list(user_.trash());
    std::size_t looked = 0;
    for (const auto& each : trashed ? *trashed : std::vector<DirectoryEntry>()) {
        if (each.kind != FileKind::directory || !namesApplication(each.name)) continue;
        if (++looked > mostTrashedBundles) break;
        const auto place = user_.trash() / each.name;
        const auto bundle = Bundle::open(files_, place);
        if (bundle && lowercased(bundle->identifier().value_or("")) == bundleID) bundles.push_back(place);
    }
    return bundles;
}

} // namespace tidwen
