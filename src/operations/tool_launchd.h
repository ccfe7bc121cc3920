#pragma once

#include "platform/launchd.h"
#include "platform/process_runner.h"

#include <cstdint>
#include <string_view>

namespace tidwen {

/// launchd's list of overrides on the running Mac, asked of /bin/launchctl (at most 10 seconds).
class ToolLaunchd : public Launchd {
  public:
    /// `userID` names the user's session.
    ToolLaunchd(ProcessRunner& processes, std::uint32_t userID) : processes_(processes), userID_(userID) {}
    std::map<std::string, bool> disabledOverrides(bool isSystemDomain) const override;

  private:
    ProcessRunner& processes_;
    std::uint32_t userID_;
};

/// Label → switched off, from the output of "launchctl print-disabled". macOS 12 and older say true and
/// false, newer ones disabled and enabled; lines with any other value belong to another list.
std::map<std::string, bool> parseDisabledServices(std::string_view output);

} // namespace tidwen
