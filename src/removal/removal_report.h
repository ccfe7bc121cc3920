#pragma once

#include "base/message.h"
#include "base/path.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "quarantine/manifest.h"
#include "removal/chosen_items.h"
#include "removal/unseen.h"
#include "scan/permissions/permission_audit.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The privacy grants still recorded after a removal.
struct VerificationReport {
    struct AppVerification {
        std::string bundleID;
        std::string name;
        std::vector<PermissionGrant> tccSurvivors;
        std::vector<PermissionGrant::Scope> unreadable = {}; ///< where others may remain
        friend bool operator==(const AppVerification&, const AppVerification&) = default;
    };
    std::vector<AppVerification> apps; ///< in the order of the report
    friend bool operator==(const VerificationReport&, const VerificationReport&) = default;
};

/// The result of one run.
struct RemovalReport {
    std::vector<AppRecord> apps;
    RemovalMode mode = RemovalMode::uninstall;
    Path quarantineRoot; ///< "/" when nothing was to be moved or unloaded: nothing can be undone
    Path manifestURL;    ///< "/" in the same case
    std::vector<RemovalOperation> operations; ///< the whole plan
    std::vector<OperationResult> results =
        {}; ///< refused steps, user-level results, root-level ones, each in plan order
    std::vector<std::string> irreversible = {}; ///< kinds of steps that were done and cannot be undone
    std::optional<VerificationReport> verification = {};
    std::optional<std::int64_t> reclaimedBytes = {}; ///< of moved items; absent when none were moved
    bool isReclaimedPartial = false; ///< measuring stopped at a limit; `reclaimedBytes` is a lower bound
    /// Why there is no manifest. The journal then stays in the folder; undo uses it instead, and recovery
    /// builds the manifest from it.
    std::optional<Message> manifestFailure = {};
    /// Old paths of items that are not completely in quarantine: something was left behind, or the move was
    /// not finished. Recovery tries again.
    std::vector<std::string> unsettled = {};

    /// Items found that stay because their names are not valid UTF-8, which a manifest cannot store.
    std::vector<Path> skippedNames = {};
    Unseen unseen = {};                    ///< what the search could not read
    std::vector<Remainder> left = {};      ///< what was found and stays
    std::vector<Path> emptiedFolders = {}; ///< contained an application and are empty now
    std::vector<Path> deadLinks = {};      ///< led to a removed application

    struct Failure {
        RemovalOperation operation;
        Message reason;
    };
    /// Whether the application's permissions are kept without counting as survivors: it stays, or another one
    /// claims them, and no reset was requested.
    bool keepsItsPermissions(const std::string& bundleID) const;

    /// Whether permissions of an application remain, or may remain, after a reset.
    bool missedAPermission() const;

    /// The run was stopped before its last step had begun.
    bool wasStopped() const;
    /// The run was stopped before its first step.
    bool isUntouched() const;
    /// No step was begun: each was refused, or the run was stopped before it.
    bool hasBegunNothing() const;

    /// Failed operations with their reasons, in plan order, including those not begun.
    std::vector<Failure> failures() const;
};

} // namespace tidwen
