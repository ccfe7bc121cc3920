#pragma once

#include "base/log.h"
#include "host/login_file.h"

#include <filesystem>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Starts a command at login with an entry in the autostart folder of a Linux desktop (XDG Autostart of
/// freedesktop.org). An entry disabled in the desktop's own settings counts as absent.
class XdgAutostart : public LoginFile {
  public:
    /// `command`: the absolute path of the program, and its arguments.
    XdgAutostart(const std::filesystem::path& folder, std::vector<std::string> command, Log& log)
        : LoginFile(folder / "com.corvella.tidwen.desktop", log), command_(std::move(command)) {}

    /// "$XDG_CONFIG_HOME/autostart", else "~/.config/autostart".
    static std::filesystem::path defaultFolder();

  private:
    tl::expected<std::string, std::string> text() const override;
    bool isOn(const std::string& text) const override;

    std::vector<std::string> command_;
};

/// The text of the entry; every argument is quoted as required by the "Exec" key.
std::string autostartEntry(const std::vector<std::string>& command);

} // namespace tidwen
