#pragma once

#include "base/executor.h"
#include "program/mac.h"
#include "program/session_models.h"
#include "program/settings_follower.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/undo_service.h"
#include "removal/removal_flow_model.h"
#include "removal/startup_chores.h"
#include "scan/applications/installed_bundles.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

namespace tidwen {

/// What an undo on this Mac works with.
UndoService::Ports undoPorts(Mac& mac);

/// The services of one open Mac, put together once for whoever drives them. What acts on the Mac stands here
/// and below; a terminal or a window adds only how it shows things and how it waits.
class Session {
  public:
    /// `looks`: whether bundles will be looked at again and again. `mac` and `main` outlive it; `main` runs
    /// what models hand back to the main thread.
    Session(Mac& mac, Executor& main, InstalledBundles::Looks looks);

    Mac& mac() { return mac_; }
    ProtectedApps& protectedApps() { return protectedApps_; }
    AppTags& tags() { return tags_; }
    AppPreferences& preferences() { return preferences_; }
    /// What a window shows besides a removal.
    SessionModels& models() { return models_; }
    /// From now on preferences, tags and protected applications follow what other processes do to them. False
    /// when that cannot be had: changes are seen at the next start.
    bool followSettings();
    /// One thread, so what is posted is done in its order.
    Executor& background() { return background_; }
    /// What the model of a removal works with.
    RemovalFlowModel::Services removalServices();
    StartupChores::Services startupServices();

    /// All bundles as they are now. The next scan uses the same look.
    std::shared_ptr<const BundleSnapshot> lookAtBundles();
    /// Blocks; any thread but the main one, which would wait for it.
    OrphanScanResult sweepOrphans(const std::set<std::string>& protectedIDs, const StopToken& stop,
                                  const OrphanScanner::OnFound& onFound, const OnStep& onStep = {}) const;

  private:
    std::unique_ptr<ResidueScanner> makeScanner();

    Mac& mac_;
    Executor& main_;
    InstalledBundles bundles_;
    std::shared_ptr<const BundleSnapshot> seen_; ///< looked at to find names, not yet used by a scan
    AppTargetLoader loader_;
    ProtectedApps protectedApps_;
    AppTags tags_;
    AppPreferences preferences_;
    RemovalExecutor executor_;
    UndoService undo_;
    QuarantinePurge purge_;
    PermissionAudit audit_;
    // Last, so that they end their work before what the work uses is gone.
    WorkQueue treeQueue_;
    WorkQueue background_;
    SessionModels models_;
    std::optional<SettingsFollower> settingsFollower_;
};

} // namespace tidwen
