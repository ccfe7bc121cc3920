#pragma once

#include "base/path.h"

#include <vector>

namespace tidwen {

/// Where the search for bundles was blocked or stopped at a limit. All lists are sorted. Includes bundles
/// whose contents were read incompletely.
struct BundleCoverage {
    std::vector<Path>
        unreadable; ///< folders that could not be listed, and links to applications on a missing disk
    std::vector<Path> uncounted;   ///< folders whose search stopped at a limit or was asked to end early
    std::vector<Path> damaged;     ///< bundles whose Info.plist exists but cannot be read
    std::vector<Path> absent;      ///< /Applications if it does not exist, as on an incomplete disk
    bool seesApplications = false; ///< /Applications exists and was listed completely

    /// Every folder was listed completely and every bundle could be identified.
    bool isComplete() const {
        return seesApplications && unreadable.empty() && uncounted.empty() && damaged.empty();
    }

    friend bool operator==(const BundleCoverage&, const BundleCoverage&) = default;
};

} // namespace tidwen
