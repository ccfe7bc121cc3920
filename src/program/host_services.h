#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "operations/tool_launchd.h"
#include "platform/defaults.h"
#include "platform/folder_events.h"
#include "platform/login_item.h"
#include "platform/notifications.h"
#include "platform/process_runner.h"
#include "posix/posix_process_runner.h"
#include "settings/write_behind_defaults.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tidwen {

/// Services of the host operating system, independent of the Mac being worked on: settings of its user, login
/// item, notifications and tools.
class HostServices {
  public:
    /// `loginCommand`: what to start at login: the program's absolute path and its arguments.
    HostServices(std::vector<std::string> loginCommand, Log& log);

    Defaults& defaults() { return *defaults_; }
    /// From now on settings are stored behind, for a program whose main thread must not wait. Call once,
    /// before `defaults` is used. `main` outlives this object.
    WriteBehindDefaults& storeBehind(Executor& main);
    LoginItem& loginItem() { return *loginItem_; }
    Notifications& notifications() { return *notifications_; }
    ProcessRunner& processes() { return processes_; }
    /// The file of known applications, beside the settings.
    std::filesystem::path knownApps() const;

  private:
    std::unique_ptr<FolderEvents> folders_; ///< of this machine; `defaults_` watches its file with it
    std::unique_ptr<Defaults> defaults_;
    PosixProcessRunner processes_;
    ToolLaunchd launchd_;
    std::unique_ptr<LoginItem> loginItem_;
    std::unique_ptr<Notifications> notifications_;
};

/// The login item of the application, for its main program; null where that has none.
std::unique_ptr<LoginItem> applicationLoginItem(Log& log);

/// The settings of this machine's user. With `folders`, of this machine, they can be watched.
std::unique_ptr<Defaults> hostDefaults(Log& log, FolderEvents* folders = nullptr);

/// Watches folders below `root` on this machine.
std::unique_ptr<FolderEvents> hostFolderEvents(const std::filesystem::path& root);

} // namespace tidwen
