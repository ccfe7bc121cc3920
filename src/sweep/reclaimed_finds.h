#pragma once

#include "base/message.h"
#include "base/path.h"
#include "base/uuid.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/other_applications.h"
#include "scan/matching/trace.h"
#include "sweep/sweep_gaps.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;
class OwnerJudge;

/// Finds of an earlier sweep, which had no owner then.
struct EarlierFinds {
    std::string bundleID; ///< of the owner that was missing
    std::span<const Trace> traces;
};

/// Why each of the finds, by the trace's `id`, is not to be taken; those that still have no owner are absent.
using Reclaimed = std::map<Uuid, Message>;

/// Why an item stays that this application claims since it was found; without one, somebody unnamed.
Message describeReclaimed(const std::optional<Claimant>& owner);

/// Judges finds of an earlier sweep by the owners of this moment: whatever that would leave alone now is
/// somebody's. Not thread-safe.
class ReclaimedFinds {
  public:
    /// One look at the owners. References must outlive this object.
    struct Owners {
        const FileSystem& files;
        const UserEnvironment& user;
        const RunningApplications& running;
        const BundleSnapshot& bundles;
        const KnownOwners& known;
        const std::vector<SweepGap>& gaps;
        OwnerJudge& judge;
    };
    explicit ReclaimedFinds(Owners owners);

    /// `bundleID`: of the owner that was missing.
    std::optional<Message> whyReclaimed(const Trace& trace, const std::string& bundleID) const;

  private:
    bool holdsWhatIsInUse(const Path& path) const;
    std::optional<Claimant> claimantOf(const std::string& identifier) const;

    Owners owners_;
    OtherApplications applications_;
};

} // namespace tidwen
