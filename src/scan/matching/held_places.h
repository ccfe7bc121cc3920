#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
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

    /// Whose place lies in the item, not at it; `realItem` is the same without links. Applications that
    /// nobody knows of yet are looked for in it: six folders deep, in the two thousand folders that are
    /// nearest, and in ten thousand of all items.
    std::optional<Claimant> holderIn(const Path& item, const Path& realItem);

  private:
    std::optional<Claimant> within(const Path& folder) const;
    std::optional<Claimant> applicationIn(const Path& item);
    std::optional<Claimant> holderAt(const Path& application) const;

    const ResidueMatcher& matcher_;
    const FileSystem& files_;
    const std::set<Path>& leaving_;
    const StopToken& stop_;
    std::map<std::string, Claimant> holders_; ///< by the keys of their places
    std::size_t foldersLeft_ = 10'000;
};

/// The bundle may stand in a folder of the target's without being anybody else's. One that continues the
/// target's identifier, or is called like its helper, is an application of its own where it is found through
/// a link.
bool isPartOfTarget(const ResidueMatcher& matcher, const OwningBundle& bundle,
                    const std::vector<Path>& damaged);

/// Adds where the programs of launchd jobs lie that may still start and are not the target's: each is its
/// owner's, else held by its label. `leavingIDs`: identifiers of applications that go in the same run, whose
/// jobs hold nothing.
void addProgramsOfJobs(HeldPlaces& held, const ScanContext& context,
                       const std::vector<std::string>& leavingIDs);

} // namespace tidwen
