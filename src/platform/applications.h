#pragma once

#include <chrono>
#include <string>

namespace tidwen {

/// The applications that are running. None on a volume.
class RunningApplications {
  public:
    virtual ~RunningApplications() = default;
    virtual bool isRunning(const std::string& bundleID) const = 0;
    /// Asks every instance to quit; blocks up to `wait`. True when none is left.
    virtual bool quit(const std::string& bundleID, std::chrono::milliseconds wait) = 0;
};

} // namespace tidwen
