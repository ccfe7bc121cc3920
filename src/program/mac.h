#pragma once

#include "base/path.h"
#include "operations/admin_script_runner.h"
#include "operations/permission_revoker.h"
#include "operations/privileged_runner.h"
#include "platform/folder_events.h"
#include "platform/login_item.h"
#include "platform/notifications.h"
#include "platform/system.h"
#include "platform/usage_records.h"
#include "scan/policy/removability.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tidwen {

struct Mac;

/// Owns a Mac and what it refers to.
class OwnedMac {
  public:
    virtual ~OwnedMac() = default;
    virtual Mac& mac() = 0;
};

/// One Mac, for the terminal or a window: ports that read it and ports that change it. Created by `VolumeMac`
/// or `RunningMac`, which own what it refers to.
struct Mac {
    System system;
    PrivilegedRunner& userRunner;
    PrivilegedRunner& privilegedRunner;
    PermissionRevoker& permissionRevoker;
    FolderEvents& folderEvents;
    Notifications& notifications;
    LoginItem& loginItem;
    /// The file on this machine that stores known applications between starts.
    std::filesystem::path knownApps;
    /// Whether the Finder offers this program's menu entry; never on a volume. Thread-safe.
    std::function<bool()> isFinderExtensionEnabled;
    /// The folder that the processes of an application group share; empty where only its usual place is
    /// known.
    std::function<std::optional<Path>(const std::string& group)> groupContainer = {};
    const UsageRecords* usageRecords = nullptr; ///< null on a volume
    /// Runs a script as an administrator; absent on a volume, where no prompt is possible.
    std::optional<AdminScriptRunner::Execute> administrator;
    AdminScriptRunner::Trash trashForRoot = AdminScriptRunner::Trash::openToRoot;
    std::optional<std::filesystem::path>
        volume; ///< this machine's folder with the volume; absent on the running Mac

    MoveRights rights() const { return administrator ? MoveRights::administrator : MoveRights::own; }
};

} // namespace tidwen
