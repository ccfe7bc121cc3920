#pragma once

#include "base/path.h"
#include "platform/user_environment.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/matching/scan_result.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// What the search before a removal could not read. Items there stay.
struct Unseen {
    std::vector<Path> unreadableLocations = {}; ///< folders, records and privacy databases
    std::uint64_t leftOut = 0;                  ///< number of files and folders beyond the limit
    BundleCoverage owners = {};                 ///< where unread bundles may claim what is removed

    /// Every place was searched. Claims of other applications may still be unknown, as in a scan.
    bool isNothing() const { return unreadableLocations.empty() && leftOut == 0; }
    bool knowsAllOwners() const;
};

/// Combined over all these scans of one user, each place once.
Unseen unseenIn(const std::vector<ScanResult>& results, const UserEnvironment& user);

} // namespace tidwen
