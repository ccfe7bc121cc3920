#pragma once

#include <map>
#include <string>

namespace tidwen {

/// launchd's list of overrides. Only jobs that were switched on or off by hand stand in it.
class Launchd {
public:
    virtual ~Launchd() = default;
    /// Label → switched off, of the system domain or of the user's graphical session. Empty when unreadable.
    virtual std::map<std::string, bool> disabledOverrides(bool isSystemDomain) const = 0;
};

} // namespace tidwen
