#pragma once

#include "base/path.h"
#include "platform/launchd.h"
#include "platform/process_runner.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

/// launchd on the running Mac, through /bin/launchctl (timeout 10 seconds for a query, 30 for a change).
/// Changing a job of the system domain shows an administrator prompt.
class ToolLaunchd : public Launchd {
  public:
    /// `userID` identifies the user's session.
    ToolLaunchd(ProcessRunner& processes, std::uint32_t userID) : processes_(processes), userID_(userID) {}
    std::map<std::string, bool> disabledOverrides(bool isSystemDomain) const override;
    tl::expected<void, LaunchdError> setEnabled(bool on, const std::string& label, const Path& plist,
                                                bool isSystemDomain) override;

    /// Whether launchctl ended so because the user has no domain, as over ssh without a login at the screen.
    static bool meansNoSession(int status) { return status == 112 || status == 125; }
    static constexpr const char* noSessionKey = "failure.noUserSession";

  private:
    tl::expected<void, LaunchdError> switchAsAdministrator(const std::string& script);

    ProcessRunner& processes_;
    std::uint32_t userID_;
};

/// Label → disabled, from the output of "launchctl print-disabled". macOS 12 and older print true and false,
/// newer versions disabled and enabled; lines with any other value belong to another list.
std::map<std::string, bool> parseDisabledServices(std::string_view output);

} // namespace tidwen
