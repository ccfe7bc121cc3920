#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "base/path.h"
#include "platform/workspace.h"

#include <QByteArray>
#include <QCache>
#include <QPixmap>
#include <atomic>
#include <memory>
#include <set>

namespace tidwen {

/// The icons of the applications on one Mac. They are read and decoded in the background when they are first
/// asked for, and kept by size, the least used ones given up first. Main thread only.
class AppIcons {
  public:
    /// What is passed outlives it. Ending it waits for the icon that is being read, unless `finishWork` has.
    AppIcons(const Workspace& workspace, Executor& main) : workspace_(workspace), main_(main) {}
    ~AppIcons() { close(); }
    AppIcons(const AppIcons&) = delete;
    AppIcons& operator=(const AppIcons&) = delete;

    /// The icon in a square of `pixels`. Null while it is on its way, and for a bundle without one that can
    /// be read.
    QPixmap icon(const Path& bundle, int pixels);

    /// None arrives any more.
    void close();
    /// Waits for the icon that is being read: on any thread, after `close`.
    void finishWork() { queue_.finish(); }

    /// Some are still on their way.
    bool isWaiting() const { return !onTheirWay_.empty(); }

    /// Emitted for each that can now be had.
    Signal<const Path&> arrived;

  private:
    void read(const Path& bundle, int pixels);

    const Workspace& workspace_;
    Executor& main_;
    QCache<QByteArray, QPixmap> icons_{qsizetype{64} * 1024}; ///< costs are kilobytes
    std::set<QByteArray> onTheirWay_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
    std::atomic<bool> isEnding_ = false;
    WorkQueue queue_; ///< last: its work uses the others
};

} // namespace tidwen
