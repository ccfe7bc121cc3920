#pragma once

#include <string>

namespace tidwen {

/// The applications registered with Launch Services, wherever they are on disk.
class KnownApplications {
  public:
    virtual ~KnownApplications() = default;
    /// Whether an application with this identifier, in any letter case, is registered and exists.
    /// Thread-safe; blocks.
    virtual bool isKnown(const std::string& bundleID) const = 0;
};

} // namespace tidwen
