#pragma once

#include "base/byte_sum.h"
#include "base/log.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/receipts.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/trace.h"
#include "sweep/known_owners.h"
#include "sweep/sweep_gaps.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// What an application that is gone left behind.
struct OrphanGroup {
    std::string bundleID; ///< in lower case; no installed application claims it
    std::string name;     ///< the best that is known of what people called it
    std::vector<Trace> traces;

    ByteSum bytes() const;
};

struct OrphanScanResult {
    std::vector<OrphanGroup> groups; ///< largest first
    std::vector<Path> unreadableLocations;
    std::vector<Path> skippedNames = {}; ///< in search locations; not judged, their names are not valid UTF-8
    /// Files and folders not read, because the disk holds too much to read. When an application could own
    /// what was not read, there are no groups at all.
    std::uint64_t leftOut = 0;
    std::vector<SweepGap> gaps = {}; ///< why some of what may be left, or all of it, was left alone

    /// Everything was looked at: what is not among the groups is not there.
    bool isComplete() const {
        return unreadableLocations.empty() && skippedNames.empty() && leftOut == 0 && gaps.empty();
    }
};

/// Finds leftovers whose owner is gone, wherever applications leave things. Never fails; what cannot be
/// attributed with confidence is left alone.
class OrphanScanner {
  public:
    struct Ports {
        const FileSystem& files;
        const Receipts& receipts;
        const RunningApplications& running;
        Log& log;
    };
    /// Does the system know an application with this identifier (lower case)?
    using IsRegistered = std::function<bool(const std::string& bundleID)>;
    /// Traces as they are found, measured; from the calling thread.
    using OnFound = std::function<void(const std::vector<Trace>&)>;

    OrphanScanner(Ports ports, UserEnvironment user, IsRegistered isRegistered)
        : ports_(ports), user_(std::move(user)), isRegistered_(std::move(isRegistered)) {}

    /// `protectedIDs`: identifiers whose leftovers are left alone. Of what is streamed some may turn out to
    /// belong to an application that came meanwhile, and is missing in the result. Stopped early it gives no
    /// groups at all: nothing was looked at once more. A step is one search location.
    OrphanScanResult scan(InstalledBundles& installed, const std::set<std::string>& protectedIDs,
                          const StopToken& stop = {}, const OnFound& onFound = {}, const OnStep& onStep = {});

  private:
    /// One look at all that lives, and at what of it could not be seen.
    struct Look {
        KnownOwners owners;
        std::vector<SweepGap> gaps = {};
    };
    Look lookForOwners(InstalledBundles& installed, const StopToken& stop) const;

    Ports ports_;
    UserEnvironment user_;
    IsRegistered isRegistered_;
};

} // namespace tidwen
