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

/// What others keep in places that may lie in a find of the target's: a folder that is moved takes all of it
/// along, whoever the folder is called after.
class HeldPlaces {
  public:
    /// Where the matcher's other bundles lie, under all their names, but those that are the target's own by
    /// their identifier (`isPartOfTarget`) and parts that many applications carry. One without an identifier
    /// counts only when it is `damaged`, so that it may be anybody's. What lies at a place of `leaving` holds
    /// nothing. The references must outlive it.
    HeldPlaces(const ResidueMatcher& matcher, const FileSystem& files, const std::vector<Path>& damaged,
               const std::set<Path>& leaving, const StopToken& stop);

    void add(const Path& place, const Claimant& holder);

    /// Marks the trace of an item in which somebody's place lies, not of one that is the place; `realItem` is
    /// the item without links. Applications that nobody knows of yet are looked for in it, six folders deep;
    /// where a folder cannot be read, or one item has more than ten thousand or all have more than forty
    /// thousand, the trace is marked as one that may hold others.
    void mark(Trace& trace, const Path& item, const Path& realItem);

  private:
    std::optional<Claimant> within(const Path& folder) const;
    /// `isSeen`: whether everything in it was looked at.
    std::optional<Claimant> applicationIn(const Path& item, bool& isSeen);
    std::optional<Claimant> holderAt(const Path& application) const;

    const ResidueMatcher& matcher_;
    const FileSystem& files_;
    const std::set<Path>& leaving_;
    const StopToken& stop_;
    std::map<std::string, Claimant> holders_; ///< by the keys of their places
    std::size_t foldersLeft_ = 40'000;
};

/// The bundle may stand in a folder of the target's without being anybody else's. One that continues the
/// target's identifier, or is called like its helper, is an application of its own where it is found through
/// a link.
bool isPartOfTarget(const ResidueMatcher& matcher, const OwningBundle& bundle,
                    const std::vector<Path>& damaged);

/// The launchd jobs in the folders of the user and of the machine. Those of applications that go in the same
/// run are left out; `leavingIDs`: their identifiers.
std::vector<LaunchItem> jobsThatStay(const ScanContext& context, const std::vector<std::string>& leavingIDs);

/// Whose a job is that is not the target's: its owner's, else its label's.
std::optional<Claimant> holderOfJob(const ScanContext& context, const LaunchItem& job);

/// Adds where the programs of jobs lie that may still start and are not the target's.
void addProgramsOfJobs(HeldPlaces& held, const ScanContext& context, const std::vector<LaunchItem>& jobs);

} // namespace tidwen
