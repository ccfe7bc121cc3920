#include "scan/matching/held_places.h"

#include "base/path_key.h"
#include "base/text.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/job_program.h"
#include "scan/applications/launch_item.h"
#include "scan/applications/owning_bundle.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/identifier_index.h"
#include "scan/matching/location_scan.h"

#include <algorithm>

namespace tidwen {

namespace {

std::string folded(std::string_view text) {
    return lowercased(composed(text));
}

/// Nobody when the job is the target's.
std::optional<Claimant> holderBy(const ScanContext& context, const LaunchItem& job) {
    if (auto found = attributeJob(context, job)) return std::move(found->contestedBy);
    if (auto other = context.matcher.others().longestContinued(folded(job.label))) return other;
    return Claimant{.bundleID = job.label, .name = job.label, .place = job.plist};
}

/// Somebody reaches it as an application of its own, wherever it lies.
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

std::optional<Claimant> HeldPlaces::holderIn(const Path& item, const Path& realItem) {
    if (auto holder = within(item)) return holder;
    if (auto holder = within(realItem)) return holder;
    return applicationIn(realItem);
}

std::optional<Claimant> HeldPlaces::applicationIn(const Path& item) {
    constexpr std::size_t mostFolders = 2'000, deepest = 6;
    const auto info = files_.info(item);
    if (!info || info->kind != FileKind::directory || isBundleName(item.lastComponent())) return std::nullopt;
    std::vector<std::pair<Path, std::size_t>> folders = {{item, 0}}; // with their depths, nearest first
    for (std::size_t i = 0; i < folders.size() && foldersLeft_ > 0 && !stop_.stopRequested(); ++i) {
        --foldersLeft_;
        const auto [folder, depth] = folders[i];
        const auto entries = files_.list(folder);
        if (!entries) continue;
        for (const auto& entry : *entries) {
            if (entry.kind != FileKind::directory) continue;
            const Path inner = folder / entry.name;
            if (inner.lowercasedExtension() == "app") {
                if (auto holder = holderAt(inner)) return holder;
            } else if (!isBundleName(entry.name) && depth < deepest && folders.size() < mostFolders) {
                folders.emplace_back(inner, depth + 1);
            }
        }
    }
    return std::nullopt;
}

std::optional<Claimant> HeldPlaces::holderAt(const Path& application) const {
    const auto bundle = Bundle::open(files_, application);
    if (!bundle || leaving_.contains(application)) return std::nullopt;
    const OwningBundle found = {
        .url = application, .place = application, .bundleID = bundle->identifier().value_or("")};
    if (isPartOfTarget(matcher_, found, {bundle->isDamaged ? application : Path()})) return std::nullopt;
    return Claimant{.bundleID = found.bundleID, .name = bundle->name(), .place = application};
}

std::optional<Claimant> HeldPlaces::within(const Path& folder) const {
    const auto prefix = pathKey(folder.standardized()).string() + "/";
    const auto first = holders_.lower_bound(prefix);
    return first != holders_.end() && first->first.starts_with(prefix) ? std::optional(first->second)
                                                                       : std::nullopt;
}

void addProgramsOfJobs(HeldPlaces& held, const ScanContext& context,
                       const std::vector<std::string>& leavingIDs) {
    std::vector<std::string> leaving;
    leaving.reserve(leavingIDs.size());
    for (const auto& identifier : leavingIDs)
        leaving.push_back(folded(identifier));
    const IdentifierIndex leavingJobs(std::move(leaving));
    JobPrograms programs(context.files);
    for (const auto& folder : {context.user.libraryFolder() / "LaunchAgents", Path("/Library/LaunchAgents"),
                               Path("/Library/LaunchDaemons")})
        for (const auto& job : listLaunchItems(context.files, folder, false, context.stop)) {
            if (context.stop.stopRequested()) return;
            const auto places = placesOfProgram(context.files, job);
            if (places.empty() || leavingJobs.longestContinued(folded(job.label)) > 0) continue;
            if (job.programPath && programs.find(*job.programPath) == JobProgram::gone) continue;
            if (const auto holder = holderBy(context, job))
                for (const auto& place : places)
                    held.add(place, *holder);
        }
}

} // namespace tidwen
