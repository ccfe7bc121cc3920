#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/interrupted_return.h"
#include "scan/policy/path_policy.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tidwen {

/// Completes what an earlier, interrupted undo began for single items. The number of attempts is limited.
class EarlierUndo {
  public:
    /// Both must outlive it.
    EarlierUndo(FileSystem& files, const PathPolicy& policy)
        : files_(files), policy_(policy), returns_(files) {}

    /// Between two devices it may have set the item `from` in quarantine aside on its way to the old place or
    /// a numbered name. The path at which it has arrived now, if it has. If it had arrived and changed since,
    /// what is left of it in quarantine is no item any more: it stays aside.
    std::optional<Path> finishMove(const Path& from, const Path& oldPlace);
    /// What `finishMove` last left aside as such; nullopt for anything else.
    const std::optional<Path>& rest() const { return rest_; }
    /// The same for an item that arrived at its old place, without moving anything.
    std::optional<Path> findRest(const Path& from, const Path& oldPlace);

    /// Without exclusive renames it may have left the item under both names. The new one if the item has only
    /// that now.
    std::optional<Path> finishLink(const Path& from, const Path& oldPlace);

  private:
    std::vector<InterruptedReturn> begun(const Path& from, const Path& oldPlace);
    std::optional<Path> restOf(const Path& arrived, const Path& from);
    int arrivedAs(const Path& from, const Path& oldPlace);
    bool lacksAnyOf(const Path& arrived, const Path& left);

    FileSystem& files_;
    const PathPolicy& policy_;
    InterruptedReturns returns_;
    std::optional<Path> rest_;
    std::size_t namesRead_ = 0;
    int attempts_ = 0;
};

} // namespace tidwen
