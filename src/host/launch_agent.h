#pragma once

#include "host/login_file.h"

#include <vector>

namespace tidwen {

/// Starts a command at login with a launch agent of the Mac's user: a property list that launchd reads from
/// the next login on.
class LaunchAgent : public LoginFile {
  public:
    /// `command`: the absolute path of the program, and its arguments.
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
