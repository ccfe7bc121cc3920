#pragma once

#include "base/byte_sum.h"
#include "base/log.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/receipts.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/trace.h"
#include "sweep/known_owners.h"
#include "sweep/reclaimed_finds.h"
#include "sweep/sweep_gaps.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The leftovers of an application that is gone.
struct OrphanGroup {
    std::string bundleID; ///< in lower case; no installed application claims it
    std::string name;     ///< the best known display name
    std::vector<Trace> traces;

    ByteSum bytes() const;
};

struct OrphanScanResult {
    std::vector<OrphanGroup> groups; ///< largest first
    std::vector<Path> unreadableLocations;
    std::vector<Path> skippedNames =
        {}; ///< in search locations; not judged, because their names are not valid UTF-8
    /// Files and folders not read because the budget was exhausted. When an application could own something
    /// unread, there are no groups at all.
    std::uint64_t leftOut = 0;
    std::vector<SweepGap> gaps = {}; ///< why some or all possible leftovers were left alone

    /// Everything was searched: there is nothing besides the groups.
    bool isComplete() const {
        return unreadableLocations.empty() && skippedNames.empty() && leftOut == 0 && gaps.empty();
    }
};

/// Finds leftovers without an owner wherever applications leave files. Never fails; what cannot be attributed
/// with confidence is left alone.
class OrphanScanner {
  public:
    struct Ports {
        const FileSystem& files;
        const Receipts& receipts;
        const RunningApplications& running;
        Log& log;
    };
    /// Whether the system knows an application with this identifier (lower case).
    using IsRegistered = std::function<bool(const std::string& bundleID)>;
    /// Receives measured traces as they are found, on the calling thread.
    using OnFound = std::function<void(const std::vector<Trace>&)>;

    OrphanScanner(Ports ports, UserEnvironment user, IsRegistered isRegistered)
        : ports_(ports), user_(std::move(user)), isRegistered_(std::move(isRegistered)) {}

    /// `protectedIDs`: identifiers whose leftovers are left alone. Streamed traces may turn out to belong to
    /// an application installed meanwhile; these are missing in the result. When stopped early there are no
    /// groups at all, because the final check was not done. A step is one search location.
    OrphanScanResult scan(InstalledBundles& installed, const std::set<std::string>& protectedIDs,
                          const StopToken& stop = {}, const OnFound& onFound = {}, const OnStep& onStep = {});

    /// Judges finds of an earlier sweep or search again, with one look at the owners of this moment.
    Reclaimed reclaimed(InstalledBundles& installed, const std::vector<EarlierFinds>& finds,
                        const std::set<std::string>& protectedIDs) const;

  private:
    /// One look at all owners in use, and at what of them could not be seen.
    struct Look {
        KnownOwners owners;
        std::vector<SweepGap> gaps = {};
    };
    Look lookForOwners(const BundleSnapshot& bundles, const StopToken& stop) const;

    Ports ports_;
    UserEnvironment user_;
    IsRegistered isRegistered_;
};

} // namespace tidwen
