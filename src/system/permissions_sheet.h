#pragma once

#include "base/executor.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/texts.h"
#include "operations/permission_revoker.h"
#include "scan/permissions/permission_audit.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace tidwen {

/// One line of the sheet.
struct PermissionRow {
    PermissionGrant grant;
    bool isRevoking = false; ///< a change of its service is in flight

    std::tuple<std::string, PermissionGrant::Scope, bool> key() const {
        return {grant.service, grant.scope, grant.isPathClient};
    }
    friend bool operator==(const PermissionRow&, const PermissionRow&) = default;
};

/// The privacy permissions of one application while somebody looks at them and takes some back. Belongs to
/// the main thread; the databases are read and changed in the background.
class PermissionsSheet {
  public:
    struct Ports {
        const PermissionAudit& auditor;
        PermissionRevoker& revoker;
        Executor& main;
        Executor& background;
    };

    PermissionsSheet(Ports ports, AppTarget app);

    Property<std::optional<PermissionAudit::Result>> audit; ///< nothing while it is read for the first time
    Property<std::set<std::string>> revoking;               ///< services that are being revoked
    Property<std::optional<Message>> errorText;             ///< of the last failure that people are told of
    ObservableList<PermissionRow> rows;                     ///< of both

    const AppTarget& app() const { return app_; }

    void load(std::function<void()> done = {});
    /// Takes one back and reads again; ignored while its service is being revoked. A dismissed password
    /// prompt is no error.
    void revoke(const PermissionGrant& grant, std::function<void()> done = {});

    /// What stands behind a permission ("Limited · For all users"); empty for an ordinary one.
    static std::string detail(const PermissionGrant& grant, const Texts& texts);

  private:
    void show();

    Ports ports_;
    AppTarget app_;
    std::vector<Subscription> following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
