#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/held_items.h"
#include "quarantine/manifest.h"
#include "scan/policy/path_policy.h"

#include <map>
#include <vector>

namespace tidwen {

/// What moves between disks left of originals that they were removing, beside either end. Such a rest is no
/// item: all of it had arrived at the other end.
std::vector<Path> arrivedRests(const Path& item, const FileSystem& files);

/// Removes such rests. Caches which folders have any, so use it for one moment only.
class ArrivedRests {
  public:
    /// All must outlive it.
    ArrivedRests(FileSystem& files, const PathPolicy& policy, HeldItems& held)
        : files_(files), policy_(policy), held_(held) {}

    struct Outcome {
        std::vector<Path> removed;
        std::vector<Path> left; ///< the item has changed since, or the system refuses to remove them
    };
    /// Removes those of a move whose content is at the other end, or in a run that has the item whole.
    Outcome settle(const ManifestEntry& move);

  private:
    std::vector<Path> of(const Path& item);
    void settleInQuarantine(const Path& item, const Path& oldPlace);
    void settleAtOldPlace(const Path& oldPlace, const Path& item);

    FileSystem& files_;
    const PathPolicy& policy_;
    HeldItems& held_;
    std::map<Path, bool> hasAny_; ///< by folder
};

} // namespace tidwen
