#pragma once

#include "base/log.h"
#include "platform/login_item.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tidwen {

/// Starts a command at login by an entry in the autostart folder of a Linux desktop (XDG
/// Autostart, as freedesktop.org describes it). What goes wrong is logged with the path.
class XdgAutostart : public LoginItem {
  public:
    /// `command`: the program by absolute path, and its arguments.
    XdgAutostart(std::filesystem::path folder, std::vector<std::string> command, Log& log)
        : folder_(std::move(folder)), command_(std::move(command)), log_(log) {}

    /// An entry that the desktop's own settings switched off counts as none.
    bool isEnabled() const override;
    /// Writes the entry anew, or removes it. A link of its name is replaced or removed, never followed.
    bool setEnabled(bool enabled) override;

    /// "$XDG_CONFIG_HOME/autostart", else "~/.config/autostart".
    static std::filesystem::path defaultFolder();

  private:
    std::filesystem::path entry() const { return folder_ / "com.corvella.tidwen.desktop"; }
    bool failed(std::string_view what, std::string_view reason) const;

    std::filesystem::path folder_;
    std::vector<std::string> command_;
    Log& log_;
};

/// The text of the entry; every argument quoted as the format's "Exec" key asks.
std::string autostartEntry(const std::vector<std::string>& command);

} // namespace tidwen
