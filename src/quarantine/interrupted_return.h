#pragma once

#include "platform/file_system.h"
#include "quarantine/manifest.h"
#include "scan/policy/path_policy.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// A copy that an undo between two disks began beside an item's old place and did not finish. No journal
/// tells of an undo: its copies are found by their names.
struct InterruptedReturn {
    Path from; ///< where the item lies in quarantine, or stands aside there
    Path to;   ///< the old place, or the name beside it that was free then
    Path copy; ///< hidden, beside `to`
    friend bool operator==(const InterruptedReturn&, const InterruptedReturn&) = default;
};

/// Finds such copies. Lists each folder once, so it is for one moment only.
class InterruptedReturns {
  public:
    explicit InterruptedReturns(const FileSystem& files) : files_(files) {}

    /// Those of the moves of a run. Only looks.
    std::vector<InterruptedReturn> of(const std::vector<ManifestEntry>& entries);

  private:
    const std::set<std::string>& copiesIn(const Path& folder);

    const FileSystem& files_;
    std::map<Path, Path> real_;                    ///< by the folder as records have it
    std::map<Path, std::set<std::string>> copies_; ///< names in a real folder
    int numbersTried_ = 0;
};

/// Whether everything in the copy is in the original, of the same kind and no smaller there. Anything else
/// came from elsewhere, or is what the original has lost since.
bool canHaveGrownFrom(const Path& original, const Path& copy, const FileSystem& files);

/// Settles one: takes the copy away when it can have grown from what lies whole in quarantine; when the
/// original was set aside already, completes the return with a copy that is whole, else puts the original
/// back into quarantine. What the safety policy would not let move is left alone. True when no copy is left.
bool settle(const InterruptedReturn& found, FileSystem& files, const PathPolicy& policy);

/// An undo that was cut off at its end left the original aside, or under both its names, although the item
/// has arrived: takes away what is at the old place, too. True when nothing is left of it.
bool settleArrived(const ManifestEntry& move, FileSystem& files, const PathPolicy& policy);

} // namespace tidwen
