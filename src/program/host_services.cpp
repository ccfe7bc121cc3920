#include "program/host_services.h"

#include "host/desktop_notifications.h"
#include "host/xdg_autostart.h"
#include "platform/launchd.h"
#include "platform/process_runner.h"
#include "settings/file_defaults.h"
#include <unistd.h>
#ifdef __APPLE__
#include "host/application_login_item.h"
#include "host/exclusive_login_item.h"
#include "host/launch_agent.h"
#include "host/script_notifications.h"
#include "macos/fs_events.h"
#include "macos/main_app_login_item.h"
#include "macos/main_bundle.h"
#include "macos/preferences_defaults.h"
#include "macos/user_notifications.h"
#include "scan/applications/app_target.h"
#include "settings/user_folder.h"
#else
#include "volume/volume_folder_events.h"
#endif

namespace tidwen {

namespace {

#ifdef __APPLE__
/// With a settings folder named in the environment, settings are kept there, so that tests change nothing of
/// the account.
bool isAccountUsed() {
    return !namedFolder("XDG_CONFIG_HOME");
}
#endif

std::unique_ptr<LoginItem> ownLoginItem(std::vector<std::string> command, Log& log,
                                        [[maybe_unused]] Launchd& launchd,
                                        [[maybe_unused]] ProcessRunner& processes) {
#ifdef __APPLE__
    if (isAccountUsed()) {
        using enum ExclusiveLoginItem::Program;
        const auto mainProgram = mainProgramBeside(command.front());
        std::unique_ptr<LoginItem> agent =
            std::make_unique<LaunchAgent>(LaunchAgent::defaultFolder(), std::move(command), log, launchd);
        if (auto own = applicationLoginItem(log))
            return std::make_unique<ExclusiveLoginItem>(std::move(own), std::move(agent), application);
        if (!mainProgram) return agent;
        return std::make_unique<ExclusiveLoginItem>(
            std::make_unique<ApplicationLoginItem>(processes, *mainProgram), std::move(agent), terminal);
    }
#endif
    return std::make_unique<XdgAutostart>(XdgAutostart::defaultFolder(), std::move(command), log);
}

std::unique_ptr<Notifications> ownNotifications(ProcessRunner& processes) {
#ifdef __APPLE__
    if (isMainProgramOfBundle()) return std::make_unique<UserNotifications>();
    if (isAccountUsed()) return std::make_unique<ScriptNotifications>(processes);
#endif
    return std::make_unique<DesktopNotifications>(processes);
}

} // namespace

std::unique_ptr<LoginItem> applicationLoginItem([[maybe_unused]] Log& log) {
#ifdef __APPLE__
    if (isAccountUsed() && isMainProgramOfBundle()) return std::make_unique<MainAppLoginItem>(log);
#endif
    return nullptr;
}

std::unique_ptr<Defaults> hostDefaults(Log& log, FolderEvents* folders) {
#ifdef __APPLE__
    if (isAccountUsed()) return std::make_unique<PreferencesDefaults>(std::string(tidwenBundleID), log);
#endif
    return std::make_unique<FileDefaults>(FileDefaults::defaultFile(), log, folders);
}

std::unique_ptr<FolderEvents> hostFolderEvents(const std::filesystem::path& root) {
#ifdef __APPLE__
    return std::make_unique<FsEvents>(root);
#else
    return std::make_unique<VolumeFolderEvents>(root);
#endif
}

std::filesystem::path HostServices::knownApps() const {
#ifdef __APPLE__
    if (isAccountUsed()) return userHome() / "Library/Application Support/Tidwen/applications.json";
#endif
    return FileDefaults::defaultFile().replace_filename("applications.json");
}

WriteBehindDefaults& HostServices::storeBehind(Executor& main) {
    auto behind = std::make_unique<WriteBehindDefaults>(std::move(defaults_), main);
    auto& result = *behind;
    defaults_ = std::move(behind);
    return result;
}

HostServices::HostServices(std::vector<std::string> loginCommand, Log& log)
    : folders_(hostFolderEvents("/")),
      defaults_(hostDefaults(log, folders_.get())),
      launchd_(processes_, ::getuid()),
      loginItem_(ownLoginItem(std::move(loginCommand), log, launchd_, processes_)),
      notifications_(ownNotifications(processes_)) {}

} // namespace tidwen
