#pragma once

#include "base/path.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/removability.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// Everything found for one application.
struct ScanResult {
    AppTarget target;
    /// Identifiers of what its bundle contains: login items, nested bundles, jobs.
    std::vector<std::string> helperBundleIDs = {};
    std::vector<Trace> traces; ///< in search order
    /// Folders that could not be listed or that are broken links, and unreadable containers, receipts and
    /// launchd jobs: the scan is incomplete.
    std::vector<Path> unreadableLocations;
    std::vector<Path> skippedNames; ///< finds that cannot be moved: their names are not valid UTF-8
    std::uint64_t leftOut = 0;      ///< files and folders not read because the budget was exhausted
    /// Why the application itself cannot be removed from its location; its data can be found all the same.
    std::optional<ImmovableApplication> immovable = {};
    bool isProtected = false;   ///< by the user, or nobody knows whether it is: nothing of it is taken
    BundleCoverage owners = {}; ///< where other owners may lie that the attribution does not know
    /// Nothing was looked for by the target's name: it is too short, too common, or has the form of an
    /// identifier.
    bool nameMatchingDisabled = false;
    /// Nor by its identifier: it is none, or is called as a file is.
    bool identifierMatchingDisabled = false;
    /// Nor by these identifiers of its helpers, for the same reason.
    std::vector<std::string> unusableHelpers = {};
    PermissionAudit::Result permissions; ///< read again after a removal

    /// Every place was searched. What other bundles own may still be unknown (`owners`).
    bool isComplete() const {
        return unreadableLocations.empty() && skippedNames.empty() && leftOut == 0
               && permissions.unreadable.empty();
    }
};

} // namespace tidwen
