#include "scan/matching/staying_bundles.h"

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/user_environment.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/held_places.h"
#include "scan/matching/location_scan.h"
#include "scan/matching/residue_matcher.h"
#include "scan/policy/search_location.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>

namespace tidwen {
namespace {

bool isInLibraryOf(const UserEnvironment& user, const Path& place) {
    return place.isWithin(Path("/Library")) || place.isWithin(user.libraryFolder());
}

/// The snapshot's bundles with these indices.
OtherApplications indexOf(const std::shared_ptr<const BundleSnapshot>& bundles,
                          std::vector<std::size_t> which, const AppTarget& target, const StopToken& stop) {
    std::vector<OwningBundle> others;
    others.reserve(which.size());
    for (const auto index : which)
        others.push_back(bundles->bundles()[index]);
    return {std::move(others), target.bundleID, [bundles, which = std::move(which), stop] {
                bundles->readAllContents(stop);
                std::vector<BundleContents> contents;
                contents.reserve(which.size());
                for (const auto index : which)
                    contents.push_back(bundles->contents(index));
                return contents;
            }};
}

/// Determines which bundles in searched folders a scan for the target takes, themselves or with their folder.
class OwnLeftovers {
  public:
    OwnLeftovers(const ResidueMatcher& matcher, const UserEnvironment& user, const std::vector<Path>& damaged)
        : matcher_(matcher), damaged_(damaged) {
        for (const auto& location : searchLocations(user))
            if (location.category == TraceCategory::supportFiles)
                hasVendors_.emplace(location.url,
                                    location.style == SearchLocation::Style::vendorNestedChildren);
    }

    /// The nearest folder decides: a folder of "Application Support" may be a location itself.
    bool contain(const OwningBundle& bundle) const {
        std::optional<Path> below;
        for (Path item = bundle.place, folder; !item.isRoot(); below = item, item = folder) {
            folder = item.parent();
            const auto location = hasVendors_.find(folder);
            if (location == hasVendors_.end()) continue;
            if (isTargets(item, bundle)) return true;
            return location->second && below && isVendorFolder(matcher_, item.lastComponent())
                   && isTargets(*below, bundle);
        }
        return false;
    }

    /// It is called like the target and says itself whose it is as little as a plain folder does, so it is no
    /// sign of another owner.
    bool isNamesake(const OwningBundle& bundle) const {
        if (!bundle.bundleID.empty() || std::ranges::find(damaged_, bundle.url) != damaged_.end())
            return false;
        const auto found = matcher_.attribute(bundle.place.stem());
        return found && !found->contestedBy;
    }

  private:
    bool isTargets(const Path& item, const OwningBundle& bundle) const {
        const auto found = matcher_.attribute(item.lastComponent());
        if (!found || found->contestedBy) return false;
        const bool isClaimed = item != bundle.place || matcher_.mayClaimBundle(item.lastComponent());
        return isClaimed && isPartOfTarget(matcher_, bundle, damaged_);
    }

    const ResidueMatcher& matcher_;
    const std::vector<Path>& damaged_;
    std::map<Path, bool> hasVendors_;
};

} // namespace

OtherApplications stayingBundles(const std::shared_ptr<const BundleSnapshot>& bundles,
                                 const AppTarget& target, const std::vector<std::string>& helperBundleIDs,
                                 const std::set<Path>& leaving, const UserEnvironment& user,
                                 const StopToken& stop) {
    if (!bundles) return {};
    std::vector<std::size_t> staying, onTheirOwn, inLibrary;
    for (std::size_t i = 0; i < bundles->bundles().size(); ++i) {
        const auto& bundle = bundles->bundles()[i];
        if (leaving.contains(bundle.place)) continue;
        const bool isInLibrary = isInLibraryOf(user, bundle.place);
        (isInLibrary ? inLibrary : onTheirOwn).push_back(i);
    }
    staying = onTheirOwn;
    if (!inLibrary.empty()) {
        const ResidueMatcher matcher(target, indexOf(bundles, onTheirOwn, target, stop), helperBundleIDs);
        const OwnLeftovers own(matcher, user, bundles->coverage().damaged);
        for (const auto index : inLibrary)
            if (const auto& bundle = bundles->bundles()[index];
                !own.contain(bundle) && !own.isNamesake(bundle))
                staying.push_back(index);
    }
    return indexOf(bundles, std::move(staying), target, stop);
}

std::vector<Path> placesOfApplications(const BundleSnapshot& bundles, const UserEnvironment& user) {
    std::vector<Path> places;
    const auto add = [&](const Path& place) {
        if (!isInLibraryOf(user, place)) places.push_back(place.standardized());
    };
    for (const auto& bundle : bundles.bundles()) {
        add(bundle.url);
        if (bundle.place != bundle.url) add(bundle.place);
        for (const auto& name : bundle.foundAs)
            if (name != bundle.url && name != bundle.place) add(name);
    }
    return places;
}

std::vector<std::string> identifiersOfLeaving(const BundleSnapshot& bundles, const std::set<Path>& leaving) {
    std::vector<std::string> identifiers;
    for (const auto& bundle : bundles.bundles())
        if (leaving.contains(bundle.place)) identifiers.push_back(bundle.bundleID);
    return identifiers;
}

std::vector<std::string> groupsOfLeaving(const BundleSnapshot& bundles, const Path& target,
                                         const std::set<Path>& leaving) {
    std::vector<std::string> groups;
    for (std::size_t i = 0; i < bundles.bundles().size(); ++i) {
        const auto& place = bundles.bundles()[i].place;
        if (place == target || !leaving.contains(place)) continue;
        const auto& declared = bundles.contents(i).groups;
        groups.insert(groups.end(), declared.begin(), declared.end());
    }
    return groups;
}

} // namespace tidwen
