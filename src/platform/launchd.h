#pragma once

#include "base/message.h"
#include "base/path.h"

#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a job was not switched.
struct LaunchdError {
    enum class Kind { failed, authorizationCancelled, process };
    Kind kind = Kind::failed;
    Message message; ///< what to tell; empty for a dismissed prompt, which is silent everywhere
};

/// launchd's list of overrides. Only jobs that were switched on or off by hand stand in it.
class Launchd {
  public:
    virtual ~Launchd() = default;
    /// Label → switched off, of the system domain or of the user's graphical session. Empty when unreadable.
    virtual std::map<std::string, bool> disabledOverrides(bool isSystemDomain) const = 0;
    /// Switches a job on (and loads it) or off (and unloads it). `plist` is the job's property list.
    virtual tl::expected<void, LaunchdError> setEnabled(bool on, const std::string& label, const Path& plist,
                                                        bool isSystemDomain) = 0;
};

} // namespace tidwen
