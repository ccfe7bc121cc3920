#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/held_items.h"
#include "quarantine/manifest.h"
#include "scan/policy/path_policy.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

/// The reason why such a rest keeps a run, with its path.
inline constexpr const char* restOfRemovalKey = "failure.restOfRemoval %@";

/// What moves between disks left of originals that they were removing, beside either end. Such a rest is no
/// item: all of it had arrived at the other end.
std::vector<Path> arrivedRests(const Path& item, const FileSystem& files);

/// Those beside the old places of moves, by old place as recorded. Changes nothing.
std::multimap<std::string, Path> restsBesideOldPlaces(const std::vector<ManifestEntry>& entries,
                                                      const FileSystem& files);

/// Those beside the items in quarantine, by old place. What is in them was put back, or may be nowhere else.
std::multimap<std::string, Path> restsInQuarantine(const std::vector<ManifestEntry>& entries,
                                                   const FileSystem& files);

/// Removes such rests. A forged record can name many items for one rest, so all attempts share one budget: a
/// rest is compared only with items that have everything at its top, with a limited number of names and
/// within the `ComparisonLimit`, which a further comparison of a rest uses up with all of its bytes.
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
    /// Forgets which folders had any; what was spent of the budget stays spent.
    void lookAgain() { hasAny_.clear(); }

  private:
    /// What comparing a rest takes.
    struct Weight {
        std::vector<std::string> top; ///< names in the rest itself; none for a file
        std::size_t names = 0;        ///< below it, too
        std::uint64_t bytes = 0;
        std::uint64_t free =
            0; ///< of these the holes and further names of one file, which cost no disk space
        bool isTooMuch = false;
        bool wasTried = false;
    };
    Weight& weightOf(const Path& rest);
    Weight weigh(const Path& rest) const;
    bool mayLieIn(const Path& item, const Weight& weight);
    bool mayTry(const Path& from, const Path& item);
    bool spend(std::size_t names);

    std::vector<Path> of(const Path& item);
    void settleInQuarantine(const Path& item, const Path& oldPlace);
    void settleAtOldPlace(const Path& oldPlace, const Path& item);

    FileSystem& files_;
    const PathPolicy& policy_;
    HeldItems& held_;
    std::map<Path, bool> hasAny_;                                       ///< by folder
    std::map<std::pair<std::uint64_t, std::uint64_t>, Weight> weights_; ///< by device and inode
    std::size_t namesLeft_ = 300'000;
};

} // namespace tidwen
