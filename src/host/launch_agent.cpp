#include "host/launch_agent.h"

#include "base/property_list.h"
#include "settings/shared_file.h"
#include "settings/user_folder.h"

#include <cerrno>
#include <system_error>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t maximumAgentBytes = 64u << 10;

PropertyListDictionary agent(const std::vector<std::string>& command) {
    return {{"Label", "com.corvella.tidwen.watch"},
            {"ProcessType", "Background"},
            {"ProgramArguments", PropertyListArray(command.begin(), command.end())},
            {"RunAtLoad", true}};
}

} // namespace

fs::path LaunchAgent::defaultFolder() {
    return userHome() / "Library/LaunchAgents";
}

bool LaunchAgent::isEnabled() const {
    const auto bytes = SharedFile(file(), SharedFile::Links::kept).read(maximumAgentBytes);
    const auto list = bytes ? parsePropertyList(*bytes) : tl::unexpected(PropertyListError::malformed);
    if (!list) return false;
    const auto* disabled = list->find("Disabled");
    return !disabled || !disabled->asBool().value_or(false);
}

bool LaunchAgent::setEnabled(bool enabled) {
    std::error_code failure;
    if (!enabled) {
        fs::remove(file(), failure);
        return !failure || failed("remove", failure.message());
    }
    const auto text = writeXmlPropertyList(agent(command_));
    if (parsePropertyList(text) != agent(command_)) return failed("write", "its words cannot stand in it");
    fs::create_directories(folder_, failure);
    if (failure) return failed("write", failure.message());
    const SharedFile shared(file(), SharedFile::Links::kept);
    const auto lock = shared.lockFolder(); // `settings set` and a `watch` that sees it both write
    errno = 0;
    return (lock.isHeld() && shared.replace(text)) || failed("write", std::generic_category().message(errno));
}

bool LaunchAgent::failed(std::string_view what, std::string_view reason) const {
    log_.error("Cannot {} the login agent {}: {}", what, file().string(), reason);
    return false;
}

} // namespace tidwen
