#pragma once

#include "operations/admin_script_runner.h"
#include "operations/permission_revoker.h"
#include "operations/privileged_runner.h"
#include "platform/folder_events.h"
#include "platform/login_item.h"
#include "platform/notifications.h"
#include "platform/system.h"
#include "scan/policy/removability.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace tidwen {

/// One Mac as whoever drives the program gets it, the terminal or a window: the ports that tell of it, and
/// what acts on it. Made by `VolumeMac` or `RunningMac`, which own what it refers to.
struct Mac {
    System system;
    PrivilegedRunner& userRunner;
    PrivilegedRunner& privilegedRunner;
    PermissionRevoker& permissionRevoker;
    FolderEvents& folderEvents;
    Notifications& notifications;
    LoginItem& loginItem;
    /// This machine's file in which what is known of applications is kept between starts.
    std::filesystem::path knownApps;
    /// Whether the Finder offers this program's menu entry; never on a volume. Any thread.
    std::function<bool()> isFinderExtensionEnabled;
    /// Runs a script as an administrator; absent on a volume, where there is nobody to ask.
    std::optional<AdminScriptRunner::Execute> administrator;
    std::optional<std::filesystem::path>
        volume; ///< this machine's folder that holds it; absent on the running Mac

    MoveRights rights() const { return administrator ? MoveRights::administrator : MoveRights::own; }
};

} // namespace tidwen
