#include "scan/residue_scanner.h"

#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "scan/bundle.h"
#include "scan/location_scan.h"
#include "scan/receipt_probe.h"
#include "scan/root_needed.h"
#include "scan/side_probes.h"

#include <algorithm>
#include <fmt/core.h>

namespace tidwen {

namespace {

/// The installed applications without the target's own bundle, under whatever spelling or link it was chosen.
std::vector<InstalledIdentity>
withoutTarget(const FileSystem& files, std::vector<InstalledIdentity> installed, const AppTarget& target) {
    const auto own = files.infoFollowingLinks(target.bundleURL);
    const auto identifier = lowercased(composed(target.bundleID));
    std::erase_if(installed, [&](const InstalledIdentity& app) {
        if (!own || lowercased(composed(app.bundleID)) != identifier) return false;
        const auto info = files.infoFollowingLinks(app.url);
        return info && info->device == own->device && info->inode == own->inode;
    });
    return installed;
}

/// Login items, the bundles inside the bundle, and the labels of its launchd jobs; each once.
std::vector<std::string> helperBundleIDs(const FileSystem& files, const AppTarget& target,
                                         const StopToken& stop) {
    std::vector<std::string> helpers = target.loginItemBundleIDs;
    for (auto& embedded : embeddedBundleIDs(files, target.bundleURL, stop))
        helpers.push_back(std::move(embedded));
    for (const auto& job : target.embeddedLaunchdItems)
        helpers.push_back(job.label);
    std::sort(helpers.begin(), helpers.end());
    helpers.erase(std::unique(helpers.begin(), helpers.end()), helpers.end());
    return helpers;
}

bool isInTrash(const Path& bundle, const Path& trash) {
    return bundle.isWithinIgnoringCase(trash) && bundle.components().size() > trash.components().size();
}

Trace applicationTrace(const FileSystem& files, const UserEnvironment& user, const AppTarget& target) {
    return makeTrace(TraceCategory::application, action::MovePath{target.bundleURL}, {},
                     Reversibility::reversible, target.bundleURL.string(), std::nullopt,
                     moveNeedsRoot(files, user, target.bundleURL));
}

Trace permissionTrace(const ResidueMatcher& matcher) {
    const auto& bundleID = matcher.target().bundleID;
    auto trace = makeTrace(TraceCategory::permissions, action::ResetPermissions{bundleID}, {},
                           Reversibility::irreversibleHarmless, bundleID, std::nullopt, false);
    trace.risk = TraceRisk::review;
    // The databases name the identifier, so a copy of the application elsewhere would lose its permissions
    // too.
    if (matcher.others().hasCopyOfTarget()) trace.contestedBy = bundleID;
    return trace;
}

/// A bundle may give its job any label: macOS's own are not its to unload, another application's are shown as
/// that one's.
void addEmbeddedJobs(const ResidueMatcher& matcher, TraceCollector& traces) {
    for (const auto& job : matcher.target().embeddedLaunchdItems) {
        if (matcher.isOffLimits(job.label)) continue;
        auto trace = makeTrace(TraceCategory::launchItems, action::Bootout{job.label, job.isSystemDomain}, {},
                               Reversibility::reversible, job.label, std::nullopt, job.isSystemDomain);
        const auto own = matcher.attributeIdentifier(job.label);
        trace.contestedBy =
            own ? own->contestedBy : matcher.others().longestContinued(lowercased(composed(job.label)));
        traces.add(std::move(trace));
    }
}

/// Groups that others declare too. To learn them every signature on the Mac is read, so they are asked for
/// only when a folder's reason depends on the answer.
std::map<std::string, std::string> sharedGroups(const ResidueScanner::Neighbours& neighbours,
                                                const FileSystem& files, const UserEnvironment& user,
                                                const AppTarget& target, const StopToken& stop) {
    if (target.appGroups.empty() || !neighbours.groupsOfOthers || stop.stopRequested()) return {};
    const auto folders = files.list(user.libraryFolder() / "Group Containers");
    if (!folders) return {};
    const ResidueMatcher matcher(target, {}, {}, {});
    const bool matters = std::any_of(folders->begin(), folders->end(), [&](const DirectoryEntry& folder) {
        return matcher.matchAppGroup(folder.name).has_value();
    });
    if (!matters) return {};
    return neighbours.groupsOfOthers(target.bundleURL);
}

} // namespace

ResidueScanner::ResidueScanner(Ports ports, UserEnvironment user, Neighbours neighbours)
    : ports_(ports), user_(std::move(user)), neighbours_(std::move(neighbours)) {}

ScanResult ResidueScanner::scan(const AppTarget& target, const StopToken& stop, const Progress& progress) {
    const std::lock_guard lock(oneAtATime_);
    auto report = [&, last = std::optional<TraceCategory>()](TraceCategory category) mutable {
        if (progress && last != category)
            progress(ports_.texts.text(fmt::format("category.{}", name(category))));
        last = category;
    };

    ScanResult result;
    result.target = target;
    const BudgetedFiles files(ports_.files);
    const BudgetedReceipts receipts(ports_.receipts, files.budget());

    // First of all, so that the bundle is measured while everything else is searched.
    const PathPolicy policy(user_);
    TraceCollector traces(files, policy, stop, ports_.log);
    if (!isValidUtf8(target.bundleURL.string()))
        traces.skip(target.bundleURL);
    else if (!isInTrash(target.bundleURL.standardized(), user_.trash().standardized()))
        traces.add(applicationTrace(files, user_, target));

    const auto installed = withoutTarget(files, neighbours_.installed, target);
    const ResidueMatcher matcher(target, OtherApplications(installed, target.bundleURL, target.bundleID),
                                 helperBundleIDs(files, target, stop),
                                 sharedGroups(neighbours_, files, user_, target, stop));
    const ScanContext context = {files, user_, policy, matcher, stop, ports_.log};
    traces.add(permissionTrace(matcher));
    for (const auto& location : searchLocations(user_)) {
        if (stop.stopRequested()) break;
        report(location.category);
        if (!LocationScan(context, location, traces).run())
            result.unreadableLocations.push_back(location.url);
    }
    addEmbeddedJobs(matcher, traces);
    report(TraceCategory::receipts);
    probeReceipts(context, receipts, installed, traces);
    report(TraceCategory::keychain);
    if (!stop.stopRequested()) probeKeychain(context, ports_.keychain, ports_.texts, traces);
    report(TraceCategory::systemExtensions);
    if (!stop.stopRequested()) probeSystemExtensions(context, ports_.systemExtensions, ports_.texts, traces);
    report(TraceCategory::permissions);
    result.nameMatchingDisabled = matcher.nameMatchingDisabled();
    if (!stop.stopRequested())
        result.permissions = PermissionAudit(ports_.files, user_, ports_.texts).audit(target);
    result.skippedNames = traces.skippedNames();
    result.leftOut = files.budget().leftOut();
    if (result.leftOut > 0)
        ports_.log.warning("Too much to read: {} files and folders are left out", result.leftOut);
    result.traces = traces.take();
    return result;
}

} // namespace tidwen
