#pragma once

#include "base/log.h"
#include "platform/login_item.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tidwen {

/// Starts a command at login by a launch agent of the Mac's user: a property list in which launchd reads what
/// to run. What goes wrong is logged with the path.
class LaunchAgent : public LoginItem {
  public:
    /// `command`: the program by absolute path, and its arguments.
    LaunchAgent(std::filesystem::path folder, std::vector<std::string> command, Log& log)
        : folder_(std::move(folder)), command_(std::move(command)), log_(log) {}

    /// An agent that its own property list switches off ("Disabled") counts as none.
    bool isEnabled() const override;
    /// Writes the agent anew, or removes it; it takes effect at the next login. A link of its name is
    /// replaced or removed, never followed.
    bool setEnabled(bool enabled) override;

    /// "~/Library/LaunchAgents".
    static std::filesystem::path defaultFolder();

  private:
    std::filesystem::path file() const { return folder_ / "com.corvella.tidwen.watch.plist"; }
    bool failed(std::string_view what, std::string_view reason) const;

    std::filesystem::path folder_;
    std::vector<std::string> command_;
    Log& log_;
};

} // namespace tidwen
