#include "host/launch_agent.h"

#include "base/path.h"
#include "base/property_list.h"
#include "settings/user_folder.h"

#include <filesystem>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

std::filesystem::path LaunchAgent::defaultFolder() {
    return userHome() / "Library/LaunchAgents";
}

tl::expected<std::string, std::string> LaunchAgent::text() const {
    const PropertyListDictionary agent = {
        {"Label", label},
        {"ProcessType", "Background"},
        {"ProgramArguments", PropertyListArray(command_.begin(), command_.end())},
        {"RunAtLoad", true}};
    auto text = writeXmlPropertyList(agent);
    if (parsePropertyList(text) != agent) return tl::unexpected(std::string("its words cannot stand in it"));
    return text;
}

bool LaunchAgent::isOn(const std::string& text) const {
    const auto list = parsePropertyList(text);
    const auto* disabled = list ? list->find("Disabled") : nullptr;
    return list && !(disabled && disabled->asBool().value_or(false)) && !isSwitchedOff();
}

bool LaunchAgent::isSwitchedOff() const {
    const auto overrides = launchd_.disabledOverrides(false);
    const auto found = overrides.find(label);
    return found != overrides.end() && found->second;
}

bool LaunchAgent::setEnabled(bool enabled) {
    if (!LoginFile::setEnabled(enabled)) return false;
    if (!enabled || !isSwitchedOff()) return true;
    return launchd_.setEnabled(true, label, Path(file().string()), false).has_value();
}

} // namespace tidwen
