#pragma once

#include "base/executor.h"
#include "platform/defaults.h"

#include <functional>
#include <memory>

namespace tidwen {

/// While it lives, what another process changes in the settings is read again here: the terminal beside the
/// window, or the other way round. Belongs to the main thread.
class SettingsFollower {
  public:
    /// `reload` runs on the main thread: once in the beginning, for what changed before anybody watched, and
    /// after each change.
    SettingsFollower(Defaults& defaults, Executor& main, std::function<void()> reload);

    /// False where changes cannot be watched: they are seen at the next start.
    bool isFollowing() const { return watch_ != nullptr; }

  private:
    struct Reload;
    std::shared_ptr<Reload> reload_; ///< goes with this; work that comes back late looks at it
    std::unique_ptr<FolderEvents::Watch> watch_;
};

} // namespace tidwen
