#pragma once

#include "base/log.h"
#include "platform/defaults.h"
#include "platform/login_item.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tidwen {

/// What the system on which this program runs gives it, whatever volume it works on.
namespace ownServices {

/// Watches folders below `root`, a folder of this machine.
std::unique_ptr<FolderEvents> folderEvents(const std::filesystem::path& root);
/// The settings of this program's user. `folders`: of this machine; outlives the result.
std::unique_ptr<Defaults> defaults(Log& log, FolderEvents& folders);
/// Starts a command at the user's login: the program by absolute path, and its arguments.
std::unique_ptr<LoginItem> loginItem(std::vector<std::string> command, Log& log);

} // namespace ownServices
} // namespace tidwen
