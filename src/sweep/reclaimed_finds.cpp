#include "sweep/reclaimed_finds.h"

#include "base/text.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/shared_names.h"
#include "scan/policy/trace_category.h"
#include "sweep/identifier_domains.h"
#include "sweep/known_owners.h"
#include "sweep/owner_judge.h"

#include <algorithm>

namespace tidwen {

Message describeReclaimed(const std::optional<Claimant>& owner) {
    if (!owner) return {"failure.inUseSince"};
    return {"failure.claimedSince %@ %@",
            {owner->bundleID.empty() ? printable(owner->name) : owner->bundleID,
             printable(owner->place.string())}};
}

ReclaimedFinds::ReclaimedFinds(Owners owners)
    : owners_(owners), applications_(owners_.bundles.bundles(), {}, [&bundles = owners_.bundles] {
          std::vector<BundleContents> all;
          all.reserve(bundles.bundles().size());
          for (std::size_t i = 0; i < bundles.bundles().size(); ++i)
              all.push_back(bundles.contents(i));
          return all;
      }) {}

std::optional<Message> ReclaimedFinds::whyReclaimed(const Trace& trace, const std::string& bundleID) const {
    const auto& path = *movedPath(trace.action);
    for (const auto& gap : owners_.gaps)
        if (!canJudge(path, owners_.user, {gap})) return gap.describe();
    const bool isNamed = trace.reason.kind == MatchReason::Kind::nameToken;
    const auto inName =
        trace.category == TraceCategory::containers ? identifierInName(path.lastComponent()) : std::string();
    for (const auto& identifier : {bundleID, isNamed ? std::string() : trace.reason.value, inName})
        if (!identifier.empty() && !owners_.judge.isNobodys(identifier))
            return describeReclaimed(claimantOf(identifier));
    const bool isNameInUse = isNamed && owners_.known.mayMean(canonicalForm(trace.reason.value));
    return isNameInUse || holdsWhatIsInUse(path) ? std::optional(describeReclaimed(std::nullopt))
                                                 : std::nullopt;
}

bool ReclaimedFinds::holdsWhatIsInUse(const Path& path) const {
    if (owners_.known.holdsWhatIsInUse(path)) return true;
    const auto real = owners_.files.resolveParent(path);
    return real && owners_.known.holdsWhatIsInUse(*real);
}

/// The application that has, continues or contains the identifier, else one of the same vendor.
std::optional<Claimant> ReclaimedFinds::claimantOf(const std::string& identifier) const {
    if (auto owner = applications_.longestContinued(identifier)) return owner;
    if (auto owner = applications_.embedding(identifier)) return owner;
    const auto& bundles = owners_.bundles.bundles();
    const auto maker = makerOf(identifier);
    const auto found = std::ranges::find_if(bundles, [&](const OwningBundle& bundle) {
        return !maker.empty() && makerOf(lowercased(bundle.bundleID)) == maker;
    });
    if (found == bundles.end()) return std::nullopt;
    return Claimant{found->bundleID, found->name, found->place};
}

} // namespace tidwen
