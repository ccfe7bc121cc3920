#include "cli/own_services.h"

#ifdef __APPLE__
#include "host/launch_agent.h"
#include "macos/fs_events.h"
#include "macos/preferences_defaults.h"
#include "scan/applications/app_target.h"
#else
#include "host/xdg_autostart.h"
#include "settings/file_defaults.h"
#include "volume/volume_folder_events.h"
#endif

namespace tidwen::ownServices {

#ifdef __APPLE__
std::unique_ptr<FolderEvents> folderEvents(const std::filesystem::path& root) {
    return std::make_unique<FsEvents>(root);
}

std::unique_ptr<Defaults> defaults(Log& log, FolderEvents& folders) {
    return std::make_unique<PreferencesDefaults>(std::string(tidwenBundleID), log, folders);
}

std::unique_ptr<LoginItem> loginItem(std::vector<std::string> command, Log& log) {
    return std::make_unique<LaunchAgent>(LaunchAgent::defaultFolder(), std::move(command), log);
}
#else
std::unique_ptr<FolderEvents> folderEvents(const std::filesystem::path& root) {
    return std::make_unique<VolumeFolderEvents>(root);
}

std::unique_ptr<Defaults> defaults(Log& log, FolderEvents& folders) {
    return std::make_unique<FileDefaults>(FileDefaults::defaultFile(), log, &folders);
}

std::unique_ptr<LoginItem> loginItem(std::vector<std::string> command, Log& log) {
    return std::make_unique<XdgAutostart>(XdgAutostart::defaultFolder(), std::move(command), log);
}
#endif

} // namespace tidwen::ownServices
