#pragma once

#include "operations/privileged_runner.h"
#include "quarantine/manifest.h"
#include "removal/chosen_items.h"
#include "removal/unseen.h"
#include "scan/permissions/permission_audit.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The privacy grants that are still recorded after a removal.
struct VerificationReport {
    struct AppVerification {
        std::string bundleID;
        std::string name;
        std::vector<PermissionGrant> tccSurvivors;
        std::vector<PermissionGrant::Scope> unreadable = {}; ///< where others may have survived unseen
        friend bool operator==(const AppVerification&, const AppVerification&) = default;
    };
    std::vector<AppVerification> apps; ///< in the report's order
    friend bool operator==(const VerificationReport&, const VerificationReport&) = default;
};

/// What one run did.
struct RemovalReport {
    std::vector<AppRecord> apps;
    RemovalMode mode = RemovalMode::uninstall;
    Path quarantineRoot; ///< "/" when nothing was to be moved or unloaded: there is nothing to undo
    Path manifestURL;    ///< likewise
    std::vector<RemovalOperation> operations;  ///< the whole plan
    std::vector<OperationResult> results = {}; ///< user-level ones, then root-level ones, each in plan order
    std::optional<VerificationReport> verification = {};
    std::optional<std::int64_t> reclaimedBytes = {}; ///< of what was moved; absent when nothing was
    bool isReclaimedPartial = false; ///< there was more than is measured: `reclaimedBytes` is a lower bound
    /// Why there is no manifest. The journal then stays in the folder; undo takes it instead, and recovering
    /// interrupted runs makes the manifest from it.
    std::optional<Message> manifestFailure = {};
    /// The old places of items that are not all in quarantine: something of them was left beside, or the move
    /// was not finished. Recovery tries again.
    std::vector<std::string> unsettled = {};

    /// What was found and stays because its name is not valid UTF-8: no manifest could hold it.
    std::vector<Path> skippedNames = {};
    Unseen unseen = {};                    ///< what the search could not look at
    std::vector<Remainder> left = {};      ///< what was found and stays
    std::vector<Path> emptiedFolders = {}; ///< held an application, and hold nothing now
    std::vector<Path> deadLinks = {};      ///< led to an application that was taken

    struct Failure {
        RemovalOperation operation;
        Message reason;
    };
    /// The application stays, or another one claims its permissions, and resetting them was not asked for:
    /// those it has are no survivors.
    bool keepsItsPermissions(const std::string& bundleID) const;

    /// A permission of an application whose permissions were reset is still recorded, or may be.
    bool missedAPermission() const;

    /// Somebody asked to stop before the last step had begun.
    bool wasStopped() const;
    /// And before the first one.
    bool isUntouched() const;

    /// Failed operations with their reasons, in plan order; those that were not begun are among them.
    std::vector<Failure> failures() const;
};

} // namespace tidwen
