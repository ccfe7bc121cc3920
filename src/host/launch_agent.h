#pragma once

#include "base/log.h"
#include "host/login_file.h"
#include "platform/launchd.h"

#include <filesystem>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Starts a command at login with a launch agent of the Mac's user: a property list that launchd reads from
/// the next login on.
class LaunchAgent : public LoginFile {
  public:
    /// `command`: the absolute path of the program, and its arguments. `launchd` knows what System Settings
    /// switched off, which the file does not tell.
    LaunchAgent(const std::filesystem::path& folder, std::vector<std::string> command, Log& log,
                Launchd& launchd)
        : LoginFile(folder / (std::string(label) + ".plist"), log),
          command_(std::move(command)),
          launchd_(launchd) {}

    /// Also takes back what System Settings switched off.
    bool setEnabled(bool enabled) override;

    /// "~/Library/LaunchAgents".
    static std::filesystem::path defaultFolder();

  private:
    tl::expected<std::string, std::string> text() const override;
    bool isOn(const std::string& text) const override;
    bool isSwitchedOff() const;

    static constexpr const char* label = "com.corvella.tidwen.watch";

    std::vector<std::string> command_;
    Launchd& launchd_;
};

} // namespace tidwen
