#pragma once

#include <chrono>
#include <string>

namespace tidwen {

/// The applications that run now. On a volume none does.
class RunningApplications {
  public:
    virtual ~RunningApplications() = default;
    virtual bool isRunning(const std::string& bundleID) const = 0;
    /// Asks every instance to quit and waits; true when none is left. Blocks up to `wait`.
    virtual bool quit(const std::string& bundleID, std::chrono::milliseconds wait) = 0;
};

} // namespace tidwen
