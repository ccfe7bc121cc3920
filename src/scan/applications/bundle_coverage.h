#pragma once

#include "base/path.h"

#include <vector>

namespace tidwen {

/// Where the search for bundles could not look or did not count to the end. All sorted. Bundles stand among
/// the folders when their insides were read and not all could be.
struct BundleCoverage {
    std::vector<Path> unreadable;  ///< what could not be listed, and links to applications that are away
    std::vector<Path> uncounted;   ///< folders whose search stopped at a bound or was asked to end early
    std::vector<Path> damaged;     ///< bundles whose Info.plist cannot be read (not: has none)
    std::vector<Path> absent;      ///< /Applications when there is none, as on a disk that is not whole
    bool seesApplications = false; ///< /Applications is there and was listed to its end

    /// Every folder was listed to its end and every bundle said what it is.
    bool isComplete() const {
        return seesApplications && unreadable.empty() && uncounted.empty() && damaged.empty();
    }

    friend bool operator==(const BundleCoverage&, const BundleCoverage&) = default;
};

} // namespace tidwen
