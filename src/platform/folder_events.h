#pragma once

#include "base/path.h"

#include <functional>
#include <memory>

namespace tidwen {

/// Reports that something directly inside a folder changed, or that the folder disappeared. The listener
/// finds out what changed.
class FolderEvents {
  public:
    /// Stops watching when destroyed; no call follows.
    class Watch {
      public:
        virtual ~Watch() = default;
    };

    virtual ~FolderEvents() = default;
    /// Calls `changed` on a thread of its own; changes within about a second are reported as one. A folder
    /// that is missing or disappears is watched once it exists. Null when it cannot be watched.
    virtual std::unique_ptr<Watch> watch(const Path& folder, std::function<void()> changed) = 0;
};

} // namespace tidwen
