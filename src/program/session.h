#pragma once

#include "base/executor.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "program/mac.h"
#include "program/session_models.h"
#include "program/settings_follower.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/undo_service.h"
#include "removal/removal_executor.h"
#include "removal/removal_flow_model.h"
#include "removal/startup_chores.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/residue_scanner.h"
#include "scan/permissions/permission_audit.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"
#include "sweep/orphan_scanner.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

namespace tidwen {

/// The ports of undo on this Mac.
UndoService::Ports undoPorts(Mac& mac);

/// The services of one open Mac, composed once for the terminal and the window, which add only presentation
/// and waiting.
class Session {
  public:
    /// `looks`: whether bundles will be read repeatedly. `mac` and `main` must outlive it; `main` runs what
    /// models post to the main thread.
    Session(Mac& mac, Executor& main, InstalledBundles::Looks looks);

    Mac& mac() { return mac_; }
    ProtectedApps& protectedApps() { return protectedApps_; }
    AppTags& tags() { return tags_; }
    AppPreferences& preferences() { return preferences_; }
    /// The models of a window's other screens.
    SessionModels& models() { return models_; }
    /// Reads preferences, tags and protected applications again.
    void reloadSettings();
    /// Makes preferences, tags and protected applications follow changes by other processes. False if
    /// watching is impossible: changes are then seen at the next start.
    bool followSettings();
    /// Stops what only reads and lets no result arrive any more. The models must not be used afterwards.
    void close();
    /// Waits for the work that is under way, which a disk may hold up for ever: on any thread, after `close`.
    /// The destructor does not wait then.
    void finishWork();
    /// A single thread: tasks run in order.
    Executor& background() { return background_; }
    /// The services of a removal's model.
    RemovalFlowModel::Services removalServices();
    StartupChores::Services startupServices();

    /// A snapshot of all bundles. The next scan uses the same one.
    std::shared_ptr<const BundleSnapshot> lookAtBundles();
    /// Blocks. Not from the main thread, which would wait for itself.
    OrphanScanResult sweepOrphans(const std::set<std::string>& protectedIDs, const StopToken& stop,
                                  const OrphanScanner::OnFound& onFound, const OnStep& onStep = {}) const;

  private:
    std::unique_ptr<ResidueScanner> makeScanner(BundleReach reach);
    OrphanScanner orphanScanner() const;

    Mac& mac_;
    Executor& main_;
    InstalledBundles bundles_;
    std::shared_ptr<const BundleSnapshot> seen_; ///< read to look up names, not yet used by a scan
    AppTargetLoader loader_;
    ProtectedApps protectedApps_;
    AppTags tags_;
    AppPreferences preferences_;
    RemovalExecutor executor_;
    UndoService undo_;
    QuarantinePurge purge_;
    PermissionAudit audit_;
    // Last, so that they stop before what their work uses is destroyed.
    WorkQueue treeQueue_;
    WorkQueue background_;
    SessionModels models_;
    std::optional<SettingsFollower> settingsFollower_;
};

} // namespace tidwen
