#pragma once

#include "platform/known_applications.h"

#include <string>

namespace tidwen {

/// The applications that Launch Services knows, wherever they lie. Any thread.
class LaunchServices : public KnownApplications {
  public:
    /// One that lies in a Trash is on its way out and counts as none.
    bool isKnown(const std::string& bundleID) const override;
};

} // namespace tidwen
