#include "scan/matching/residue_scanner.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/applications/launch_item.h"
#include "scan/matching/held_places.h"
#include "scan/matching/location_scan.h"
#include "scan/matching/receipt_probe.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/scan_context.h"
#include "scan/matching/side_probes.h"
#include "scan/matching/staying_bundles.h"
#include "scan/matching/trace.h"
#include "scan/matching/trace_collector.h"
#include "scan/matching/unseen_owners.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/path_policy.h"
#include "scan/policy/root_needed.h"
#include "scan/policy/search_location.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <optional>
#include <set>

namespace tidwen {

namespace {

/// The locations of the applications to be removed: the target, and those of `together` that can be removed.
std::set<Path> leavingPlaces(const FileSystem& files, const AppTarget& target,
                             const std::vector<AppTarget>& together,
                             const std::function<bool(const AppTarget&)>& isRemovable) {
    std::set<Path> places;
    if (!target.bundleURL.isRoot())
        places.insert(files.resolve(target.bundleURL).value_or(target.bundleURL.standardized()));
    for (const auto& other : together)
        if (!other.bundleURL.isRoot() && other.bundleURL != target.bundleURL && isRemovable(other))
            places.insert(files.resolve(other.bundleURL).value_or(other.bundleURL.standardized()));
    return places;
}

/// Login items, nested bundles, and the labels of its launchd jobs; without duplicates.
std::vector<std::string> helperBundleIDs(const FileSystem& files, const AppTarget& target,
                                         const StopToken& stop) {
    std::vector<std::string> helpers = target.loginItemBundleIDs;
    if (target.bundleURL.isRoot()) return helpers;
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
    // The databases contain only the identifier, so any other bundle with it, a copy of the application or a
    // helper of another, would lose its permissions.
    trace.contestedBy = matcher.contestedBy(bundleID, {MatchReason::Kind::exactBundleID, bundleID});
    return trace;
}

/// The owner of the job that would be stopped: by its label, or by a job with that label that launchd finds
/// elsewhere.
std::optional<Claimant> otherOwnerOf(const ScanContext& context, const std::string& label,
                                     const std::vector<LaunchItem>& jobs) {
    const auto own = context.matcher.attributeIdentifier(label);
    auto other = own ? own->contestedBy : context.matcher.others().longestContinued(folded(label));
    for (const auto& job : jobs)
        if (!other && job.label == label) other = holderOfJob(context, job);
    return other;
}

/// A bundle may give its job any label: a label of macOS itself must not be unloaded, and one of another
/// application is shown as contested by it.
void addEmbeddedJobs(const ScanContext& context, const std::vector<LaunchItem>& jobs,
                     TraceCollector& traces) {
    for (const auto& job : context.matcher.target().embeddedLaunchdItems) {
        if (context.matcher.isOffLimits(job.label)) continue;
        auto trace = makeTrace(TraceCategory::launchItems, action::Bootout{job.label, job.isSystemDomain},
                               {.evidence = MatchReason::Evidence::embedded}, Reversibility::reversible,
                               job.label, std::nullopt, job.isSystemDomain);
        trace.contestedBy = otherOwnerOf(context, job.label, jobs);
        traces.add(std::move(trace));
    }
}

/// The owners of other data are known only where bundles were searched.
void logCoverage(const BundleCoverage& coverage, Log& log) {
    for (const auto& folder : coverage.absent)
        log.warning("Folder of applications is not there: {}", printable(folder.string()));
    for (const auto& folder : coverage.unreadable)
        log.warning("Folder of applications cannot be read: {}", printable(folder.string()));
    for (const auto& folder : coverage.uncounted)
        log.warning("Folder of applications holds more than is counted: {}", printable(folder.string()));
    for (const auto& bundle : coverage.damaged)
        log.warning("Bundle does not say whose it is: {}", printable(bundle.string()));
}

void addApplication(const FileSystem& files, const UserEnvironment& user, const AppTarget& target,
                    TraceCollector& traces) {
    if (target.bundleURL.isRoot()) return;
    if (!isValidUtf8(target.bundleURL.string()))
        traces.skip(target.bundleURL);
    else if (!isInTrash(target.bundleURL.standardized(), user.trash().standardized()))
        traces.add(applicationTrace(files, user, target));
}

/// What continues an installed application's identifier is its part: a helper has no bundle of its own.
void concludeGone(const ScanContext& context, ScanResult& result) {
    // A record of a permission alone is a find, too.
    if (!result.traces.empty() || !result.permissions.grants.empty())
        result.traces.push_back(permissionTrace(context.matcher));
    // Of an application that is gone after all nothing is anybody else's.
    const auto& others = context.matcher.others();
    auto owner = others.copyOfTarget();
    const auto identifier = folded(result.target.bundleID);
    if (!owner) owner = others.embedding(identifier);
    if (!owner) owner = others.longestContinued(identifier);
    for (auto& trace : result.traces)
        if (owner && !trace.contestedBy) trace.contestedBy = owner;
}

} // namespace

ResidueScanner::ResidueScanner(Ports ports, UserEnvironment user,
                               std::shared_ptr<const BundleSnapshot> bundles, MoveRights rights)
    : ports_(ports), user_(std::move(user)), bundles_(std::move(bundles)), rights_(rights) {
    if (bundles_) logCoverage(bundles_->coverage(), ports_.log);
}

/// Counts the steps of one scan: the locations, then the other sources.
class ResidueScanner::Steps {
  public:
    Steps(std::size_t locations, const OnStep& onStep)
        : onStep_(onStep), step_{.total = locations + otherSources} {}

    void begin(TraceCategory category, std::string item = {}) {
        ++step_.step;
        step_.kind = name(category);
        step_.item = std::move(item);
        if (onStep_) onStep_(step_);
    }

  private:
    static constexpr std::size_t otherSources = 4; // receipts, keychain, system extensions, permissions

    const OnStep& onStep_;
    StepProgress step_;
};

ScanResult ResidueScanner::scan(const AppTarget& target, const StopToken& stop,
                                const std::vector<AppTarget>& together, const OnStep& onStep) {
    const std::lock_guard lock(oneAtATime_);
    const auto locations = searchLocations(user_);
    Steps steps(locations.size(), onStep);
    const PathPolicy policy(user_, ports_.files);
    const auto whyImmovable = [&](const AppTarget& each) {
        return each.bundleURL.isRoot() ? std::nullopt
                                       : whyNotRemovable(each, ports_.files, policy, user_, rights_);
    };
    ScanResult result;
    result.target = target;
    const BudgetedFiles files(ports_.files);
    const BudgetedReceipts receipts(ports_.receipts, files.budget());
    result.immovable = whyImmovable(target);

    // First, so that the bundle is measured while the rest is searched.
    TraceCollector traces(files, policy, stop, ports_.log);
    addApplication(files, user_, target, traces);
    const auto leaving =
        leavingPlaces(files, target, together, [&](const AppTarget& other) { return !whyImmovable(other); });
    result.helperBundleIDs = helperBundleIDs(files, target, stop);
    const auto& helpers = result.helperBundleIDs;
    const Path targetPlace = files.resolve(target.bundleURL).value_or(target.bundleURL.standardized());
    const ResidueMatcher matcher(
        target, stayingBundles(bundles_, target, helpers, leaving, user_, stop), helpers,
        bundles_ ? groupsOfLeaving(*bundles_, targetPlace, leaving) : std::vector<std::string>());
    const auto damaged = bundles_ ? bundles_->coverage().damaged : std::vector<Path>();
    HeldPlaces held(matcher, files, damaged, leaving, stop);
    const ScanContext context = {files, user_, policy, matcher, held, targetPlace, stop, ports_.log};
    const auto jobs = jobsThatStay(context, bundles_ ? identifiersOfLeaving(*bundles_, leaving)
                                                     : std::vector<std::string>());
    addProgramsOfJobs(held, context, jobs);
    if (!target.bundleURL.isRoot()) traces.add(permissionTrace(matcher));
    for (const auto& location : locations) {
        if (stop.stopRequested()) break;
        steps.begin(location.category, location.url.string());
        for (auto& missed : LocationScan(context, location, traces).run())
            result.unreadableLocations.push_back(std::move(missed));
    }
    addEmbeddedJobs(context, jobs, traces);
    probeOtherSources(context, receipts, steps, traces, result);
    conclude(context, leaving, jobs, traces, result);
    result.leftOut = files.budget().leftOut();
    if (result.leftOut > 0)
        ports_.log.warning("Too much to read: {} files and folders are left out", result.leftOut);
    return result;
}

void ResidueScanner::probeOtherSources(const ScanContext& context, const Receipts& receipts, Steps& steps,
                                       TraceCollector& traces, ScanResult& result) const {
    const auto& stop = context.stop;
    steps.begin(TraceCategory::receipts);
    const auto applications = bundles_ ? placesOfApplications(*bundles_, user_) : std::vector<Path>();
    for (auto& missed : probeReceipts(context, receipts, applications, traces))
        result.unreadableLocations.push_back(std::move(missed));
    steps.begin(TraceCategory::keychain);
    if (!stop.stopRequested()) probeKeychain(context, ports_.keychain, traces);
    steps.begin(TraceCategory::systemExtensions);
    if (!stop.stopRequested()) probeSystemExtensions(context, ports_.systemExtensions, traces);
    steps.begin(TraceCategory::permissions);
    if (!stop.stopRequested())
        result.permissions = PermissionAudit(ports_.files, user_, ports_.texts).audit(result.target);
}

void ResidueScanner::conclude(const ScanContext& context, const std::set<Path>& leaving,
                              const std::vector<LaunchItem>& jobs, TraceCollector& traces,
                              ScanResult& result) const {
    result.nameMatchingDisabled = context.matcher.nameMatchingDisabled();
    result.identifierMatchingDisabled = context.matcher.identifierMatchingDisabled();
    result.unusableHelpers = context.matcher.unusableHelpers();
    if (bundles_)
        result.owners =
            context.stop.stopRequested() ? bundles_->coverage() : bundles_->coverageWithContents(leaving);
    result.skippedNames = traces.skippedNames();
    result.traces = traces.take();
    if (result.target.bundleURL.isRoot()) concludeGone(context, result);
    if (bundles_) markUnseenOwners(context, jobs, result);
}

} // namespace tidwen
