#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/held_items.h"
#include "quarantine/manifest.h"
#include "scan/policy/path_policy.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The unfinished copy of an undo between two disks, beside an item's old place. An undo has no journal: its
/// copies are found by name.
struct InterruptedReturn {
    Path from; ///< the item in quarantine, or set aside there
    Path to;   ///< the old place, or the name beside it that was free at that time
    Path copy; ///< hidden, beside `to`
    friend bool operator==(const InterruptedReturn&, const InterruptedReturn&) = default;
};

/// Finds such copies, comparing names as a Mac's file systems do. Caches each folder's listing, so use it for
/// one moment only.
class InterruptedReturns {
  public:
    explicit InterruptedReturns(const FileSystem& files) : files_(files) {}

    /// The copies for the moves of a run. Changes nothing.
    std::vector<InterruptedReturn> of(const std::vector<ManifestEntry>& entries);
    /// Folders of moves asked for so far that could not be listed, so a copy in them is unknown. Those of
    /// administrator moves do not count, because these leave no such copy.
    const std::set<Path>& unlisted() const { return unlisted_; }

  private:
    using Copies = std::map<std::string, std::set<std::string>>; ///< names of copies by their keys
    const Copies& copiesIn(const Path& folder);

    const FileSystem& files_;
    std::map<Path, Path> real_;     ///< by the folder as recorded
    std::map<Path, Copies> copies_; ///< by the resolved folder
    std::set<Path> unlistable_, unlisted_;
    int numbersTried_ = 0;
};

/// Whether everything in the copy is in the original, and each file of it is how that of the original begins.
/// Otherwise the copy contains foreign items or what the original has lost since. Reads both.
bool canHaveGrownFrom(const Path& original, const Path& copy, const FileSystem& files);

/// The copy that a move between disks from `from` to `to` would remove although it did not grow from that
/// item.
std::optional<Path> strayCopy(const Path& from, const Path& to, const FileSystem& files);

/// Settles one copy. If it could have been copied from what is complete in quarantine, the copy is removed.
/// If the original was already set aside, a complete copy completes the return; otherwise the original goes
/// back into quarantine. Paths that the safety policy would not let move are left alone. True when no copy is
/// left.
bool settle(const InterruptedReturn& found, FileSystem& files, const PathPolicy& policy);

/// Removes what an undo interrupted at its end left of an item that has arrived: the original set aside, or
/// its name in quarantine hard-linked to that at the old place. True when nothing is left.
bool settleArrived(const ManifestEntry& move, FileSystem& files, const PathPolicy& policy);

/// The same for an item that arrived and was removed again: what is left of it is removed if another run has
/// it whole.
bool settleTakenAgain(const ManifestEntry& move, HeldItems& held, FileSystem& files,
                      const PathPolicy& policy);

} // namespace tidwen
