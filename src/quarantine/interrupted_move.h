#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/held_items.h"
#include "quarantine/manifest.h"
#include "scan/policy/path_policy.h"

#include <optional>
#include <vector>

namespace tidwen {

/// Recovers an interrupted move from `from` to `to` between two devices. Paths that the safety policy would
/// not let move are not even looked at, because both come from a file in the Trash. Returns the remains that
/// stay although the item has arrived.
std::optional<MoveRemains> settleInterruptedMove(const Path& from, const Path& to, FileSystem& files,
                                                 const PathPolicy& policy);

/// What happens to writes into an original during its move, of which there is no copy.
enum class StrayWrites {
    stayAside,
    getAName, ///< revealed under a visible name in the old place
};

/// Recovers every move of a run. What lies aside beside an old place is removed if any run has it whole. Only
/// if none does, it belongs to the newest run that has the item or a copy that is not complete, is settled as
/// that one's and can get its name again.
void settleInterruptedMoves(const std::vector<ManifestEntry>& planned, StrayWrites strayWrites,
                            FileSystem& files, const PathPolicy& policy, HeldItems& held);

/// Whether both are names of one item, as in a move by hard link before the old name is removed.
bool isOneItem(const Path& a, const Path& b, const FileSystem& files);

/// The state of a run's plan on disk.
struct RunObservation {
    /// What can be undone, in planned order: moves whose item is in quarantine, and unloaded jobs whose
    /// property list is among them.
    std::vector<ManifestEntry> entries;
    /// Moves with something at neither place, or possibly so: set aside, half copied, staged, still
    /// hard-linked, inaccessible to this account, or possibly the unknown item in their folder in quarantine.
    std::vector<ManifestEntry> unsettled;
    /// Moves whose item is at neither place and that left no trace: another process took it. After them the
    /// unloaded jobs whose property lists are among them. `isMissing` is set.
    std::vector<ManifestEntry> missing;
};

/// Changes nothing.
RunObservation observe(const std::vector<ManifestEntry>& planned, const FileSystem& files);

} // namespace tidwen
