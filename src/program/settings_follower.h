#pragma once

#include "base/executor.h"
#include "platform/defaults.h"
#include "platform/folder_events.h"

#include <functional>
#include <memory>

namespace tidwen {

/// While it lives, reloads settings changed by another process, such as the terminal beside the window. Main
/// thread only.
class SettingsFollower {
  public:
    /// `reload` runs on the main thread: once at the beginning, for changes before watching began, and after
    /// each change.
    SettingsFollower(Defaults& defaults, Executor& main, std::function<void()> reload);

    /// False if changes cannot be watched: they are seen at the next start.
    bool isFollowing() const { return watch_ != nullptr; }

  private:
    struct Reload;
    std::shared_ptr<Reload> reload_; ///< destroyed with this object; pending work checks it
    std::unique_ptr<FolderEvents::Watch> watch_;
};

} // namespace tidwen
