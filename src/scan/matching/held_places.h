#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "scan/matching/trace.h"

#include <map>
#include <optional>
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
    /// their identifier and parts that many applications carry. One without an identifier counts only when it
    /// is `damaged`, so that it may be anybody's.
    HeldPlaces(const ResidueMatcher& matcher, const std::vector<Path>& damaged);

    void add(const Path& place, const Claimant& holder);

    /// Whose place lies in the folder, not at it; by text.
    std::optional<Claimant> within(const Path& folder) const;

  private:
    std::map<std::string, Claimant> holders_; ///< by the keys of their places
};

/// The bundle may stand in a folder of the target's without being anybody else's.
bool isPartOfTarget(const ResidueMatcher& matcher, const OwningBundle& bundle,
                    const std::vector<Path>& damaged);

/// Adds where the programs of launchd jobs lie that may still start and are not the target's: each is its
/// owner's, else held by its label. `leavingIDs`: identifiers of applications that go in the same run, whose
/// jobs hold nothing.
void addProgramsOfJobs(HeldPlaces& held, const ScanContext& context,
                       const std::vector<std::string>& leavingIDs);

} // namespace tidwen
