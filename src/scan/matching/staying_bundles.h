#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/user_environment.h"
#include "scan/applications/app_target.h"
#include "scan/matching/other_applications.h"
#include "scan/matching/scan_context.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

class BundleSnapshot;

/// The bundles that stay when the target is removed, whose property attribution must respect.
///
/// Excludes the target's own bundle and those at a place of `leaving`; also bundles in the Library that are
/// leftovers of the target: found there by its name, or with its identifier in a folder found by its name.
/// These are removed with the target. Bundle contents are read from the snapshot on demand.
OtherApplications stayingBundles(const std::shared_ptr<const BundleSnapshot>& bundles,
                                 const AppTarget& target, const std::vector<std::string>& helperBundleIDs,
                                 const std::set<Path>& leaving, const UserEnvironment& user,
                                 const StopToken& stop);

/// Locations, under all their paths, of the snapshot's stand-alone bundles: without plug-ins and helpers in
/// the Library, which an application's package may have installed.
std::vector<Path> placesOfApplications(const BundleSnapshot& bundles, const UserEnvironment& user);

/// The application groups of the bundles at the places of `leaving`, except those at `target`, the target's
/// own place.
std::vector<std::string> groupsOfLeaving(const BundleSnapshot& bundles, const Path& target,
                                         const std::set<Path>& leaving);

/// The identifiers of the bundles at the places of `leaving`.
std::vector<std::string> identifiersOfLeaving(const BundleSnapshot& bundles, const std::set<Path>& leaving);

} // namespace tidwen
