#pragma once

#include "platform/login_item.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tidwen {

/// Starts a command at login by an entry in the autostart folder of a Linux desktop (XDG
/// Autostart, as freedesktop.org describes it).
class XdgAutostart : public LoginItem {
  public:
    /// `command`: the program by absolute path, and its arguments.
    XdgAutostart(std::filesystem::path folder, std::vector<std::string> command)
        : folder_(std::move(folder)), command_(std::move(command)) {}

    bool isEnabled() const override;
    bool setEnabled(bool enabled) override;

    /// "$XDG_CONFIG_HOME/autostart", else "~/.config/autostart".
    static std::filesystem::path defaultFolder();

  private:
    std::filesystem::path entry() const { return folder_ / "com.corvella.tidwen.desktop"; }

    std::filesystem::path folder_;
    std::vector<std::string> command_;
};

/// The text of the entry; every argument quoted as the format's "Exec" key asks.
std::string autostartEntry(const std::vector<std::string>& command);

} // namespace tidwen
