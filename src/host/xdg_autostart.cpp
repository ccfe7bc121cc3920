#include "host/xdg_autostart.h"

#include "base/text.h"
#include "settings/shared_file.h"
#include "settings/user_folder.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

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

constexpr std::size_t maximumEntryBytes = 64u << 10;

/// A line break would end the value and begin a key of its own; the format is UTF-8.
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

bool XdgAutostart::isEnabled() const {
    const auto text = SharedFile(entry(), SharedFile::Links::kept).read(maximumEntryBytes);
    const auto holds = [&](const char* line) { return text->find(line) != std::string::npos; };
    return text && !holds("\nHidden=true") && !holds("\nX-GNOME-Autostart-enabled=false");
}

bool XdgAutostart::setEnabled(bool enabled) {
    std::error_code failure;
    if (!enabled) {
        fs::remove(entry(), failure);
        return !failure || failed("remove", failure.message());
    }
    for (const auto& argument : command_)
        if (!canStandInEntry(argument))
            return failed("write", "the path " + argument + " cannot stand in it");
    fs::create_directories(folder_, failure);
    if (failure) return failed("write", failure.message());
    const SharedFile shared(entry(), SharedFile::Links::kept);
    const auto lock = shared.lockFolder(); // `settings set` and a `watch` that sees it both write
    errno = 0;
    return (lock.isHeld() && shared.replace(autostartEntry(command_)))
           || failed("write", std::generic_category().message(errno));
}

bool XdgAutostart::failed(std::string_view what, std::string_view reason) const {
    log_.error("Cannot {} the login entry {}: {}", what, entry().string(), reason);
    return false;
}

} // namespace tidwen
