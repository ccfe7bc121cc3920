#include "scan/matching/held_places.h"

#include "base/path_key.h"
#include "base/text.h"
#include "scan/applications/application_within.h"
#include "scan/applications/bundle.h"
#include "scan/applications/job_program.h"
#include "scan/applications/launch_item.h"
#include "scan/applications/owning_bundle.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/identifier_index.h"
#include "scan/matching/location_scan.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/scan_context.h"

#include <algorithm>
#include <utility>

namespace tidwen {

namespace {

/// It is installed as an application of its own, through a link, wherever it lies.
bool isInstalledByLink(const OwningBundle& bundle) {
    const auto isElsewhere = [&](const Path& name) { return pathKey(name) != pathKey(bundle.place); };
    return isElsewhere(bundle.url) || std::ranges::any_of(bundle.foundAs, isElsewhere);
}

} // namespace

bool isPartOfTarget(const ResidueMatcher& matcher, const OwningBundle& bundle,
                    const std::vector<Path>& damaged) {
    if (bundle.bundleID.empty()) return std::ranges::find(damaged, bundle.url) == damaged.end();
    const auto identifier = folded(bundle.bundleID);
    if (identifier == folded(matcher.target().bundleID) || isCommonIdentifier(identifier)) return true;
    return matcher.isOwnIdentifier(identifier) && !isInstalledByLink(bundle);
}

HeldPlaces::HeldPlaces(const ResidueMatcher& matcher, const FileSystem& files,
                       const std::vector<Path>& damaged, const std::set<Path>& leaving, const StopToken& stop)
    : matcher_(matcher), files_(files), leaving_(leaving), stop_(stop) {
    for (const auto& bundle : matcher.others().bundles()) {
        if (isPartOfTarget(matcher, bundle, damaged)) continue;
        const Claimant holder = {.bundleID = bundle.bundleID, .name = bundle.name, .place = bundle.place};
        add(bundle.place, holder);
        if (bundle.url != bundle.place) add(bundle.url, holder);
        for (const auto& name : bundle.foundAs)
            if (name != bundle.place && name != bundle.url) add(name, holder);
    }
}

void HeldPlaces::add(const Path& place, const Claimant& holder) {
    holders_.emplace(pathKey(place.standardized()).string(), holder);
}

/// Only now, for it needs what the bundles contain.
void HeldPlaces::addLinkedPlaces() {
    if (std::exchange(hasLinkedPlaces_, true)) return;
    for (const auto& [place, holder] : matcher_.others().linkedPlaces())
        if (isAnothers(holder)) add(place, holder);
}

/// Of a bundle that the constructor added.
bool HeldPlaces::isAnothers(const Claimant& holder) const {
    return std::ranges::any_of(holders_, [&](const auto& each) { return each.second.place == holder.place; });
}

void HeldPlaces::mark(Trace& trace, const Path& item, const Path& realItem) {
    addLinkedPlaces();
    bool isSeen = true;
    trace.contestedBy = within(item);
    if (!trace.contestedBy) trace.contestedBy = within(realItem);
    if (!trace.contestedBy) trace.contestedBy = applicationIn(realItem, isSeen);
    trace.mayHoldOthers = !trace.contestedBy && !isSeen;
}

std::optional<Claimant> HeldPlaces::applicationIn(const Path& item, bool& isSeen) {
    std::optional<Claimant> holder;
    const auto isHeld = [&](const Path& application) {
        return (holder = holderOfInner(application)).has_value();
    };
    isSeen = visitApplicationsWithin(files_, item, foldersLeft_, isHeld, stop_) == Searched::whole;
    return holder;
}

std::optional<Claimant> HeldPlaces::bundleAt(const Path& place) const {
    const auto bundle = Bundle::open(files_, place);
    if (!bundle || leaving_.contains(place)) return std::nullopt;
    const OwningBundle found = {.url = place, .place = place, .bundleID = bundle->identifier().value_or("")};
    if (isPartOfTarget(matcher_, found, {bundle->isDamaged ? place : Path()})) return std::nullopt;
    return Claimant{.bundleID = found.bundleID, .name = bundle->name(), .place = place};
}

/// An application that does not say whose it is may be anybody's, too.
std::optional<Claimant> HeldPlaces::holderOfInner(const Path& application) const {
    const auto bundle = Bundle::open(files_, application);
    if (!bundle || leaving_.contains(application)) return std::nullopt;
    const auto identifier = bundle->identifier();
    if (!identifier || isPlaceholderIdentifier(folded(*identifier)))
        return Claimant{.bundleID = {}, .name = bundle->name(), .place = application};
    return bundleAt(application);
}

std::optional<Claimant> HeldPlaces::within(const Path& folder) const {
    const auto prefix = pathKey(folder.standardized()).string() + "/";
    const auto first = holders_.lower_bound(prefix);
    return first != holders_.end() && first->first.starts_with(prefix) ? std::optional(first->second)
                                                                       : std::nullopt;
}

std::vector<LaunchItem> jobsThatStay(const ScanContext& context, const std::vector<std::string>& leavingIDs) {
    std::vector<std::string> leaving;
    leaving.reserve(leavingIDs.size());
    for (const auto& identifier : leavingIDs)
        leaving.push_back(folded(identifier));
    const IdentifierIndex leavingJobs(std::move(leaving));
    std::vector<LaunchItem> staying;
    for (const auto& folder : {context.user.libraryFolder() / "LaunchAgents", Path("/Library/LaunchAgents"),
                               Path("/Library/LaunchDaemons")})
        for (auto& job : listLaunchItems(context.files, folder, false, context.stop))
            if (leavingJobs.longestContinued(folded(job.label)) == 0) staying.push_back(std::move(job));
    return staying;
}

std::optional<Claimant> holderOfJob(const ScanContext& context, const LaunchItem& job) {
    if (auto found = attributeJob(context, job)) return std::move(found->contestedBy);
    if (auto other = context.matcher.others().longestContinued(folded(job.label))) return other;
    return Claimant{.bundleID = job.label, .name = job.label, .place = job.plist};
}

void addProgramsOfJobs(HeldPlaces& held, const ScanContext& context, const std::vector<LaunchItem>& jobs) {
    JobPrograms programs(context.files);
    for (const auto& job : jobs) {
        if (context.stop.stopRequested()) return;
        const auto places = placesOfProgram(context.files, job);
        if (places.empty()) continue;
        if (job.programPath && programs.find(*job.programPath) == JobProgram::gone) continue;
        const auto holder = holderOfJob(context, job);
        if (!holder) continue;
        for (const auto& place :
             places) // for a folder, its contents, even when the folder itself is the find
            held.add(context.files.isDirectoryFollowingLinks(place) ? place / "*" : place, *holder);
    }
}

} // namespace tidwen
