#pragma once

#include "host/login_file.h"

#include <vector>

namespace tidwen {

/// Starts a command at login by a launch agent of the Mac's user: a property list in which launchd reads what
/// to run, from the next login on.
class LaunchAgent : public LoginFile {
  public:
    /// `command`: the program by absolute path, and its arguments.
    LaunchAgent(const std::filesystem::path& folder, std::vector<std::string> command, Log& log)
        : LoginFile(folder / "com.corvella.tidwen.watch.plist", log), command_(std::move(command)) {}

    /// "~/Library/LaunchAgents".
    static std::filesystem::path defaultFolder();

  private:
    tl::expected<std::string, std::string> text() const override;
    bool isOn(const std::string& text) const override;

    std::vector<std::string> command_;
};

} // namespace tidwen
