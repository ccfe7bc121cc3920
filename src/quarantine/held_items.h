#pragma once

#include "base/path.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// Which run of a Trash has the item of an old place. An item set aside beside its old place does not say to
/// which run it belongs, and several runs may have planned to move it. Reads the documents of all runs on
/// first use, within a read budget; looks at the items each time.
class HeldItems {
  public:
    HeldItems(const UserEnvironment& user, const FileSystem& files) : user_(user), files_(files) {}

    /// The place in quarantine of the newest run that has the item, or a copy of it that is not complete.
    std::optional<Path> holder(const std::string& oldPlace);
    /// The places of all runs that have the item whole, newest run first; of a forged number only the newest.
    std::vector<Path> wholeIn(const std::string& oldPlace);
    /// The places of all runs that have a copy of the item without its final name, newest run first.
    std::vector<Path> copiedIn(const std::string& oldPlace);
    /// Whether the run in `root` has a begun copy of the item, and another run the item itself.
    bool isElsewhereThanCopied(const ManifestEntry& move, const Path& root);
    /// Whether the run with this place of the item has a journal, and so may have been cut off in moving it.
    bool isUnfinished(const std::string& oldPlace, const Path& place);
    /// Whether a run of another home, which this Trash does not know, may have moved the item of that place.
    bool mayBeAnotherHomes(const Path& oldPlace);
    /// The same as `holder` for runs other than that in `root` that were begun at `since` or later.
    std::optional<Path> laterHolder(const std::string& oldPlace, const Path& root, Timestamp since);

  private:
    struct Planned {
        Path root;
        Timestamp createdAt;
        Path destination;
        bool isUnfinished;
    };
    /// Each once, newest run first; of at most a hundred runs.
    std::vector<Path> placesOf(const std::string& oldPlace, const std::function<bool(const Path&)>& isMeant);
    using Test = std::function<bool(const Planned&)>;
    std::optional<Path> find(const std::string& oldPlace, const Test& isMeant);
    void read();

    const UserEnvironment& user_;
    const FileSystem& files_;
    bool isRead_ = false;
    std::optional<bool> hasOtherHomes_;
    std::map<std::string, std::vector<Planned>> planned_; ///< by old place, newest run first
};

/// Drops the missing entries of the run in `root`, begun at `createdAt`, whose items a later run moved, and
/// the jobs of such items. An item of which the run has only a begun copy may be in any other run.
void dropHeldByLaterRuns(std::vector<ManifestEntry>& entries, const Path& root, Timestamp createdAt,
                         HeldItems& held);

} // namespace tidwen
