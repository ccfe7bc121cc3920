#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "scan/applications/launch_item.h"
#include "scan/matching/trace.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

class ResidueMatcher;
struct OwningBundle;
struct ScanContext;

/// Places that belong to other owners and may lie inside a find of the target: moving a folder takes all of
/// it along, whatever its name.
class HeldPlaces {
  public:
    /// Collects the locations of the matcher's other bundles, under all their paths, except those that are
    /// the target's own by identifier (`isPartOfTarget`) and components that many applications carry. A
    /// bundle without an identifier counts only when it is `damaged`, because it may then be anyone's. What
    /// lies at a place of `leaving` is ignored. The references must outlive this object.
    HeldPlaces(const ResidueMatcher& matcher, const FileSystem& files, const std::vector<Path>& damaged,
               const std::set<Path>& leaving, const StopToken& stop);

    void add(const Path& place, const Claimant& holder);

    /// Marks the trace of an item that contains such a place, but not one that is the place itself;
    /// `realItem` is the item without links. Searches it for unknown applications, six folders deep; when a
    /// folder cannot be read, one item has more than ten thousand folders or all have more than forty
    /// thousand, the trace is marked as one that may hold others.
    void mark(Trace& trace, const Path& item, const Path& realItem);

    /// The owner of the bundle that lies there (without links), whatever its name: it is decided by the
    /// bundle's own identifier. Nothing for the target's own and for one without an identifier.
    std::optional<Claimant> bundleAt(const Path& place) const;

  private:
    std::optional<Claimant> within(const Path& folder) const;
    /// `isSeen`: whether all of it was searched.
    std::optional<Claimant> applicationIn(const Path& item, bool& isSeen);
    void addLinkedPlaces();
    bool isAnothers(const Claimant& holder) const;
    std::optional<Claimant> holderOfInner(const Path& application) const;

    const ResidueMatcher& matcher_;
    const FileSystem& files_;
    const std::set<Path>& leaving_;
    const StopToken& stop_;
    std::map<std::string, Claimant> holders_; ///< by the path keys of their places
    std::size_t foldersLeft_ = 40'000;
    bool hasLinkedPlaces_ = false;
};

/// Whether the bundle may be in the target's folder without having another owner. One whose identifier
/// continues the target's, or equals its helper's, is a separate application where it is found through a
/// link.
bool isPartOfTarget(const ResidueMatcher& matcher, const OwningBundle& bundle,
                    const std::vector<Path>& damaged);

/// The launchd jobs in the folders of the user and of the machine, without those of applications removed in
/// the same run (`leavingIDs`: their identifiers).
std::vector<LaunchItem> jobsThatStay(const ScanContext& context, const std::vector<std::string>& leavingIDs);

/// The owner of a job that is not the target's: a bundle, else its label.
std::optional<Claimant> holderOfJob(const ScanContext& context, const LaunchItem& job);

/// Adds the locations of programs of jobs that may still start and are not the target's.
void addProgramsOfJobs(HeldPlaces& held, const ScanContext& context, const std::vector<LaunchItem>& jobs);

} // namespace tidwen
