#pragma once

#include "scan/matching/other_applications.h"
#include "scan/matching/scan_context.h"

#include <memory>
#include <set>
#include <vector>

namespace tidwen {

class BundleSnapshot;

/// The bundles that stay when the target goes, of which attribution has to leave each its own.
///
/// Not the target's own bundle, nor one that lies at a place of `leaving`; nor a bundle in the Library that
/// is a leftover of the target itself: found there by its name, or the target's by its identifier in a folder
/// that is found by its name. It goes with the target. The answers on what bundles carry are read from the
/// snapshot.
OtherApplications stayingBundles(const std::shared_ptr<const BundleSnapshot>& bundles,
                                 const AppTarget& target, const std::vector<std::string>& helperBundleIDs,
                                 const std::set<Path>& leaving, const UserEnvironment& user,
                                 const StopToken& stop);

/// Where the bundles of the snapshot lie that stand on their own, under all their names: not the plug-ins and
/// helpers in the Library, which an application's package may have put there.
std::vector<Path> placesOfApplications(const BundleSnapshot& bundles, const UserEnvironment& user);

/// The application groups of the bundles that lie at the places of `leaving`, without those of `target`, the
/// place of the target's own.
std::vector<std::string> groupsOfLeaving(const BundleSnapshot& bundles, const Path& target,
                                         const std::set<Path>& leaving);

/// The identifiers of the bundles that lie at the places of `leaving`.
std::vector<std::string> identifiersOfLeaving(const BundleSnapshot& bundles, const std::set<Path>& leaving);

} // namespace tidwen
