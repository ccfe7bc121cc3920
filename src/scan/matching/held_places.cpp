#include "scan/matching/held_places.h"

#include "base/path_key.h"
#include "base/text.h"
#include "scan/applications/job_program.h"
#include "scan/applications/launch_item.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/identifier_index.h"
#include "scan/matching/location_scan.h"
#include "scan/matching/shared_names.h"

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

} // namespace

bool isPartOfTarget(const ResidueMatcher& matcher, const OwningBundle& bundle,
                    const std::vector<Path>& damaged) {
    if (bundle.bundleID.empty()) return std::ranges::find(damaged, bundle.url) == damaged.end();
    return matcher.isOwnIdentifier(bundle.bundleID) || isCommonIdentifier(folded(bundle.bundleID));
}

HeldPlaces::HeldPlaces(const ResidueMatcher& matcher, const std::vector<Path>& damaged) {
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

std::optional<Claimant> HeldPlaces::within(const Path& folder) const {
    const auto prefix = pathKey(folder.standardized()).string() + "/";
    const auto first = holders_.lower_bound(prefix);
    return first != holders_.end() && first->first.starts_with(prefix) ? std::optional(first->second)
                                                                       : std::nullopt;
}

void addProgramsOfJobs(HeldPlaces& held, const ScanContext& context,
                       const std::vector<std::string>& leavingIDs) {
    std::vector<std::string> leaving;
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
