#pragma once

#include "host/login_file.h"

#include <vector>

namespace tidwen {

/// Starts a command at login by an entry in the autostart folder of a Linux desktop (XDG Autostart, as
/// freedesktop.org describes it). An entry that the desktop's own settings switched off counts as none.
class XdgAutostart : public LoginFile {
  public:
    /// `command`: the program by absolute path, and its arguments.
    XdgAutostart(const std::filesystem::path& folder, std::vector<std::string> command, Log& log)
        : LoginFile(folder / "com.corvella.tidwen.desktop", log), command_(std::move(command)) {}

    /// "$XDG_CONFIG_HOME/autostart", else "~/.config/autostart".
    static std::filesystem::path defaultFolder();

  private:
    tl::expected<std::string, std::string> text() const override;
    bool isOn(const std::string& text) const override;

    std::vector<std::string> command_;
};

/// The text of the entry; every argument quoted as the format's "Exec" key asks.
std::string autostartEntry(const std::vector<std::string>& command);

} // namespace tidwen
