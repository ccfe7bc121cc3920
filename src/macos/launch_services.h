#pragma once

#include "platform/known_applications.h"

#include <string>

namespace tidwen {

/// The applications that Launch Services knows, wherever they lie. Any thread.
class LaunchServices : public KnownApplications {
  public:
    /// One of them, in any place; what lies in a Trash is on its way out and does not count.
    bool isKnown(const std::string& bundleID) const override;
};

} // namespace tidwen
