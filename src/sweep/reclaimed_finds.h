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

/// Finds of an earlier search that had no owner then.
struct EarlierFinds {
    /// What makes them somebody's.
    enum class By {
        sweep,      ///< anything that the sweep leaves alone
        identifier, ///< the user asked for this identifier: only an application that has or contains it
    };
    std::string bundleID; ///< of the owner that was missing
    std::span<const Trace> traces;
    By by = By::sweep;
};

/// Why each of the finds, by the trace's `id`, is not to be taken; those that still have no owner are absent.
using Reclaimed = std::map<Uuid, Message>;

/// Judges finds of an earlier search by the owners of this moment. Not thread-safe.
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

    std::optional<Message> whyReclaimed(const Trace& trace, const EarlierFinds& finds) const;

  private:
    OtherApplications besides(const std::string& bundleID) const;
    std::optional<Message> whyNotWithoutOwner(const Trace& trace, const std::string& bundleID) const;
    std::optional<Message> whyNotGone(const std::string& bundleID) const;
    bool holdsWhatIsInUse(const Path& path) const;
    std::optional<Claimant> claimantOf(const std::string& identifier) const;

    Owners owners_;
    OtherApplications applications_;
};

} // namespace tidwen
