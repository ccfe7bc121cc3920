#pragma once

#include "scan/matching/scan_result.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// What the search before a removal could not look at. What lies there stays.
struct Unseen {
    std::vector<Path> unreadableLocations = {}; ///< folders, records and privacy databases
    std::uint64_t leftOut = 0;                  ///< files and folders that were too many to read
    BundleCoverage owners = {};                 ///< where others may lie that claim what is taken

    /// Every place was searched. What other applications claim may still be unknown, as in a scan.
    bool isNothing() const { return unreadableLocations.empty() && leftOut == 0; }
    bool knowsAllOwners() const;
};

/// Of all these scans of a user's, each place once.
Unseen unseenIn(const std::vector<ScanResult>& results, const UserEnvironment& user);

} // namespace tidwen
