#pragma once

#include "platform/file_system.h"
#include "scan/policy/path_policy.h"

#include <optional>

namespace tidwen {

/// Completes what an earlier, interrupted undo began for single items. The number of attempts is limited.
class EarlierUndo {
  public:
    /// Both must outlive it.
    EarlierUndo(FileSystem& files, const PathPolicy& policy) : files_(files), policy_(policy) {}

    /// Between two devices it may have set the item `from` in quarantine aside on its way to the old place or
    /// a numbered name. True if it has arrived now.
    bool finishMove(const Path& from, const Path& oldPlace);

    /// Without exclusive renames it may have left the item under both names. The new one if the item has only
    /// that now.
    std::optional<Path> finishLink(const Path& from, const Path& oldPlace);

  private:
    FileSystem& files_;
    const PathPolicy& policy_;
    int attempts_ = 0;
};

} // namespace tidwen
