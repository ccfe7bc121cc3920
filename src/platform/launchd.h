#pragma once

#include "base/message.h"
#include "base/path.h"

#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a job could not be enabled or disabled.
struct LaunchdError {
    enum class Kind { failed, authorizationCancelled, process };
    Kind kind = Kind::failed;
    Message message; ///< the text for the user; that of a dismissed prompt is never reported
};

/// launchd's overrides, which list only jobs that were enabled or disabled by hand.
class Launchd {
  public:
    virtual ~Launchd() = default;
    /// Label → disabled, of the system domain or of the user's graphical session. Empty when unreadable.
    virtual std::map<std::string, bool> disabledOverrides(bool isSystemDomain) const = 0;
    /// Enables a job (and loads it) or disables it (and unloads it). `plist` is the job's property list.
    virtual tl::expected<void, LaunchdError> setEnabled(bool on, const std::string& label, const Path& plist,
                                                        bool isSystemDomain) = 0;
};

} // namespace tidwen
