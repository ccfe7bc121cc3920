#pragma once

#include "base/executor.h"
#include "inventory/app_inventory.h"
#include "inventory/home_grid_model.h"
#include "program/mac.h"
#include "quarantine/history_model.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/undo_service.h"
#include "removal/removal_flow_model.h"
#include "removal/startup_chores.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/protected_apps.h"
#include "scan/permissions/permission_audit.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"
#include "sweep/installers_model.h"
#include "system/inbox_watcher.h"
#include "system/permissions_model.h"
#include "system/permissions_sheet.h"
#include "system/request_inbox.h"
#include "system/startup_item_scanner.h"
#include "system/startup_items_model.h"
#include "system/trash_catcher.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tidwen {

/// The models of one open Mac, shown by a window or run to completion by a terminal. Each is created on first
/// use and lives as long as this object. Main thread only.
class SessionModels {
  public:
    /// Shared with the rest of the session.
    struct Shared {
        Mac& mac;
        Executor& main;
        Executor& actions; ///< serial: changes the Mac
        AppPreferences& preferences;
        AppTags& tags;
        ProtectedApps& protectedApps;
        UndoService& undo;
        QuarantinePurge& purge;
        const PermissionAudit& audit;
        std::function<RemovalFlowModel::Services()> removal; ///< the services of a removal
        std::function<StartupChores::Services()> chores;
    };

    explicit SessionModels(Shared shared) : shared_(std::move(shared)) {}
    SessionModels(const SessionModels&) = delete;
    SessionModels& operator=(const SessionModels&) = delete;

    /// The flow of a removal, from the selection to the report.
    RemovalFlowModel& removal();
    HomeGridModel& homeGrid();
    InstallersModel& installers();
    StartupItemsModel& startupItems();
    /// The permissions of this program.
    PermissionsModel& permissions();
    HistoryModel& history();
    /// The recovery and the purge of a start, not yet begun.
    StartupChores& chores();
    TrashCatcher& trashCatcher();
    /// Whether applications that another process asks for would be taken now: the flow accepts them, and no
    /// undo or deletion runs. What is asked for meanwhile has to wait for it.
    Property<bool>& takesRequests();
    /// What changes this Mac. An undo is also that of an interrupted removal.
    enum class Work { removal, undo, deletion };
    std::optional<Work> work();
    /// Something changes it: this Mac has to stay open until that ends.
    bool isBusy() { return work().has_value(); }
    /// Destroys all models, which stops what they read. None may be asked for afterwards.
    void close();
    /// Waits for what they read, which a disk may hold up for ever: on any thread, after `close`.
    void finishReading();

    // What these functions return must be destroyed before this object.

    /// The permissions of one application, while they are shown.
    std::unique_ptr<PermissionsSheet> permissionsSheet(AppTarget app);
    /// Requests from other processes; `bundle` names the inbox. They wait for `takesRequests`.
    std::unique_ptr<InboxWatcher> inboxWatcher(const OwnBundle& bundle, InboxWatcher::OnRequest onRequest);

  private:
    WorkQueue& reading();
    WorkQueue& watching();
    std::vector<InstalledApp> listApps(const FileSystem& files) const;

    Shared shared_;
    std::optional<AppInventory> inventory_;
    std::optional<InstalledBundles> bundles_;
    std::optional<StartupItemScanner> startupScanner_;
    // Destroyed before what their work uses and after the models, which post work as long as they live.
    std::optional<WorkQueue> reading_;
    std::optional<WorkQueue> watching_; ///< one thread
    std::optional<RemovalFlowModel> removal_;
    std::optional<HomeGridModel> homeGrid_;
    std::optional<InstallersModel> installers_;
    std::optional<StartupItemsModel> startupItems_;
    std::optional<PermissionsModel> permissions_;
    std::optional<HistoryModel> history_;
    std::optional<StartupChores> chores_;
    std::optional<TrashCatcher> trashCatcher_;
    std::optional<Property<bool>> takesRequests_;
    std::vector<Subscription> following_; ///< for `takesRequests_`
};

/// The inbox of the Mac's user, in the folder of the application group that `bundle` names.
RequestInbox requestInbox(const Mac& mac, const OwnBundle& bundle);

} // namespace tidwen
