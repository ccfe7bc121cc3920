#include "host/xdg_autostart.h"

#include "settings/user_folder.h"

#include <fstream>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

/// In double quotes, with the four characters that mean something there escaped; the escape itself is escaped
/// once more, because a value of the file is unescaped before the key's own rules apply. "%" begins a field
/// code.
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

bool XdgAutostart::isEnabled() const {
    std::error_code failure;
    return fs::is_regular_file(entry(), failure);
}

bool XdgAutostart::setEnabled(bool enabled) {
    std::error_code failure;
    if (!enabled) {
        fs::remove(entry(), failure);
        return !failure;
    }
    // A line break would end the value and begin a key of its own.
    for (const auto& argument : command_)
        if (argument.find_first_of("\r\n") != argument.npos) return false;
    fs::create_directories(folder_, failure);
    if (failure) return false;
    const auto fresh = entry().string() + ".new";
    {
        std::ofstream file(fresh, std::ios::trunc);
        file << autostartEntry(command_);
        if (!file.flush()) return false;
    }
    fs::rename(fresh, entry(), failure);
    return !failure;
}

} // namespace tidwen
