#pragma once

#include "base/path.h"

#include <functional>
#include <memory>

namespace tidwen {

/// Tells that something changed directly inside a folder, or that the folder went away; what changed is for
/// the listener to find out.
class FolderEvents {
  public:
    /// Stops watching when destroyed; no call comes after that.
    class Watch {
      public:
        virtual ~Watch() = default;
    };

    virtual ~FolderEvents() = default;
    /// `changed` is called from a thread of the watcher's own, changes within about a second as one call. A
    /// folder that is missing, or goes, is watched from when it comes. Nothing when it cannot be watched.
    virtual std::unique_ptr<Watch> watch(const Path& folder, std::function<void()> changed) = 0;
};

} // namespace tidwen
