#pragma once

#include "base/log.h"
#include "host/desktop_notifications.h"
#include "platform/defaults.h"
#include "platform/folder_events.h"
#include "platform/login_item.h"
#include "posix/posix_process_runner.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tidwen {

/// What the machine on which the program runs gives it, whatever Mac it works on: the settings of its user,
/// its login, its notifications and its tools.
class HostServices {
  public:
    /// `loginCommand`: what a login starts, the program by absolute path and its arguments.
    HostServices(std::vector<std::string> loginCommand, Log& log);

    Defaults& defaults() { return *defaults_; }
    LoginItem& loginItem() { return *loginItem_; }
    Notifications& notifications() { return notifications_; }
    ProcessRunner& processes() { return processes_; }
    /// What is known of applications is kept here between starts, beside the settings.
    std::filesystem::path knownApps() const;

  private:
    std::unique_ptr<FolderEvents> folders_; ///< of this machine; `defaults_` watches its file with it
    std::unique_ptr<Defaults> defaults_;
    std::unique_ptr<LoginItem> loginItem_;
    PosixProcessRunner processes_;
    DesktopNotifications notifications_;
};

/// Watches folders below `root`, a folder of this machine.
std::unique_ptr<FolderEvents> hostFolderEvents(const std::filesystem::path& root);

} // namespace tidwen
