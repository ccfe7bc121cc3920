#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/path.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/folder_events.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// Watches the user's Trash for arriving application bundles.
///
/// What was in the Trash when watching started is not new; a bundle that leaves and returns is. All looks run
/// on a separate queue, one at a time, also the first; `onNewApps` is called through the main executor.
class TrashWatcher {
  public:
    struct Ports {
        const FileSystem& files;
        FolderEvents& events;
        const Clock& clock;
        Executor& main;
        Executor& queue; ///< serial
        Log& log;
    };
    using OnNewApps = std::function<void(const std::vector<Path>&)>;

    TrashWatcher(Ports ports, Path trash, OnNewApps onNewApps);
    ~TrashWatcher();
    TrashWatcher(const TrashWatcher&) = delete;
    TrashWatcher& operator=(const TrashWatcher&) = delete;

    /// Does nothing while watching. If the Trash cannot be watched, logs it and stays stopped.
    void start();
    void stop();
    bool isWatching() const { return watch_ != nullptr; }

  private:
    struct State;

    Ports ports_;
    Path trash_;
    std::shared_ptr<State> state_;
    unsigned watches_ = 0; ///< begun so far
    std::unique_ptr<FolderEvents::Watch> watch_;
};

} // namespace tidwen
