#pragma once

#include "base/executor.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/texts.h"
#include "operations/permission_revoker.h"
#include "scan/applications/app_target.h"
#include "scan/permissions/permission_audit.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace tidwen {

/// One row of the sheet.
struct PermissionRow {
    PermissionGrant grant;
    bool isRevoking = false; ///< a change of its service is in progress

    std::tuple<std::string, PermissionGrant::Scope, bool> key() const {
        return {grant.service, grant.scope, grant.isPathClient};
    }
    friend bool operator==(const PermissionRow&, const PermissionRow&) = default;
};

/// The privacy permissions of one application, for viewing and revoking. Main thread only; the databases are
/// read and changed in the background.
class PermissionsSheet {
  public:
    struct Ports {
        const PermissionAudit& auditor;
        PermissionRevoker& revoker;
        Executor& main;
        Executor& background;
    };

    PermissionsSheet(Ports ports, AppTarget app);

    Property<std::optional<PermissionAudit::Result>> audit; ///< nullopt during the first read
    Property<std::set<std::string>> revoking;               ///< services that are being revoked
    Property<std::optional<Message>> errorText;             ///< of the last failure to show
    ObservableList<PermissionRow> rows;                     ///< of both

    const AppTarget& app() const { return app_; }

    void load(std::function<void()> done = {});
    /// Revokes one permission and reads again; ignored while its service is being revoked. A dismissed
    /// password prompt is not an error.
    void revoke(const PermissionGrant& grant, std::function<void()> done = {});

    /// Details shown after a permission ("Limited · For all users"); empty for an ordinary one.
    static std::string detail(const PermissionGrant& grant, const Texts& texts);

  private:
    void show();

    Ports ports_;
    AppTarget app_;
    std::vector<Subscription> following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

} // namespace tidwen
