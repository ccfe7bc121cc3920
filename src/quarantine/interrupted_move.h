#pragma once

#include "platform/file_system.h"
#include "quarantine/manifest.h"
#include "scan/policy/path_policy.h"

#include <optional>
#include <vector>

namespace tidwen {

/// Settles what a kill in the middle of the move from `from` to `to` may have left on two devices. What the
/// safety policy would not let move is not looked at either: the two paths come from a file in the Trash.
/// Gives what stays aside although the item has arrived.
std::optional<MoveRemains> settleInterruptedMove(const Path& from, const Path& to, FileSystem& files,
                                                 const PathPolicy& policy);

/// What somebody wrote into an original while it was moved has no copy.
enum class StrayWrites {
    stayAside,
    getAName, ///< in the old place, that people see
};

/// The same for every move of a run.
void settleInterruptedMoves(const std::vector<ManifestEntry>& planned, StrayWrites strayWrites,
                            FileSystem& files, const PathPolicy& policy);

/// Whether both are names of one item, of which a move by a hard link has yet to take one away.
bool isOneItem(const Path& a, const Path& b, const FileSystem& files);

/// What the disk tells of a run's plan.
struct RunObservation {
    /// What can be undone, in planned order: moves whose item lies in quarantine, and unloaded jobs whose
    /// property list is among them.
    std::vector<ManifestEntry> entries;
    /// Moves of which something lies neither in its old place nor in quarantine, or may: set aside, half
    /// copied, not unlinked, where this account may not look, or as something in the item's folder in
    /// quarantine that the plan does not know.
    std::vector<ManifestEntry> unsettled;
    /// Moves whose item is at neither place although nothing hints at where it could be: somebody took it.
    /// Marked so (`isMissing`).
    std::vector<ManifestEntry> missing;
};

/// Only looks.
RunObservation observe(const std::vector<ManifestEntry>& planned, const FileSystem& files);

} // namespace tidwen
