#pragma once

#include "platform/applications.h"

#include <chrono>
#include <string>

namespace tidwen {

/// The applications that run in the user's session. Any thread.
class WorkspaceApplications : public RunningApplications {
  public:
    bool isRunning(const std::string& bundleID) const override;
    /// Asks as the Dock does, so an application may ask its user about unsaved work and stay. Nothing is ever
    /// ended by force.
    bool quit(const std::string& bundleID, std::chrono::milliseconds wait) override;
};

} // namespace tidwen
