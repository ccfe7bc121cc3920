#pragma once

#include <string>

namespace tidwen {

/// What Launch Services knows: applications of which macOS keeps a record, wherever they lie.
class KnownApplications {
  public:
    virtual ~KnownApplications() = default;
    /// An application with this identifier, in whatever letter case, is known and there. May be called from
    /// any thread; blocks.
    virtual bool isKnown(const std::string& bundleID) const = 0;
};

} // namespace tidwen
