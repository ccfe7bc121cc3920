#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "platform/file_system.h"

#include <QTimer>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace tidwen {

/// Whether the folder of an open volume is still the one that was opened: its disk may be taken away and come
/// back. Main thread only; looks in the background, one look at a time.
class VolumePresence {
  public:
    /// What is passed by reference outlives this.
    VolumePresence(const FileSystem& files, std::filesystem::path folder, Executor& main);

    Property<bool> isThere{true};
    /// `whenAnother`: called when another folder lies at its place.
    void look(std::function<void()> whenAnother = {});
    /// Looks, and acts when the folder is still there; otherwise `isThere` tells.
    void onceThere(std::function<void()> act);
    /// Looks no more.
    void close();
    /// Waits for the look that is under way: on any thread, after `close`.
    void finishWork() { queue_.finish(); }

    enum class Found { nothing, another, same };

  private:
    const FileSystem& files_;
    std::filesystem::path folder_;
    Executor& main_;
    bool isLooking_ = false;
    QTimer timer_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
    WorkQueue queue_;                                            ///< last: its work uses the others
};

} // namespace tidwen
