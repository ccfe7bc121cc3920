#include "host/xdg_autostart.h"

#include "base/text.h"
#include "settings/user_folder.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

/// In double quotes, with the four special characters escaped; the escape character itself is escaped twice,
/// because a value in the file is unescaped before the key's own rules apply. "%" begins a field code.
std::string quotedArgument(const std::string& argument) {
    std::string result = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '`' || c == '$') result += "\\\\";
        if (c == '\\') result += "\\\\\\";
        if (c == '%') result += '%';
        result += c;
    }
    return result + '"';
}

/// A line break would end the value and begin another key; the format is UTF-8.
bool canStandInEntry(const std::string& argument) {
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    return isValidUtf8(argument) && std::none_of(argument.begin(), argument.end(), isControl);
}

} // namespace

std::string autostartEntry(const std::vector<std::string>& command) {
    std::string exec;
    for (const auto& argument : command)
        exec += (exec.empty() ? "" : " ") + quotedArgument(argument);
    return "[Desktop Entry]\nType=Application\nName=Tidwen\nComment=Watches the Trash for applications\nExec="
           + exec + "\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
}

fs::path XdgAutostart::defaultFolder() {
    return userFolder("XDG_CONFIG_HOME", ".config") / "autostart";
}

bool XdgAutostart::isOn(const std::string& text) const {
    const auto holds = [&](const char* line) { return text.find(line) != std::string::npos; };
    return !holds("\nHidden=true") && !holds("\nX-GNOME-Autostart-enabled=false");
}

tl::expected<std::string, std::string> XdgAutostart::text() const {
    for (const auto& argument : command_)
        if (!canStandInEntry(argument)) return tl::unexpected("the path " + argument + " cannot stand in it");
    return autostartEntry(command_);
}

} // namespace tidwen
