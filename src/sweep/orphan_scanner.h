#pragma once

#include "base/log.h"
#include "base/stop_token.h"
#include "platform/applications.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/search_location.h"
#include "scan/trace.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

class BudgetedFiles;
class KnownOwners;

/// What an application that is gone left behind.
struct OrphanGroup {
    std::string bundleID; ///< in lower case; no installed application claims it
    std::string name;     ///< the best that is known of what people called it
    std::vector<Trace> traces;

    std::int64_t bytes() const;
};

struct OrphanScanResult {
    std::vector<OrphanGroup> groups; ///< largest first
    std::vector<Path> unreadableLocations;
    std::vector<Path> skippedNames; ///< in search locations; not judged, their names are not valid UTF-8
    /// Files and folders not read, because the disk holds too much to read. When an application could own
    /// what was not read, there are no groups at all.
    std::uint64_t leftOut = 0;
};

/// Finds leftovers whose owner is gone, wherever applications leave things. Never fails; what cannot be
/// attributed with confidence is left alone.
class OrphanScanner {
  public:
    struct Ports {
        const FileSystem& files;
        const CodeSignatures& signatures;
        const RunningApplications& running;
        Log& log;
    };
    /// Does the system know an application with this identifier (lower case)?
    using IsRegistered = std::function<bool(const std::string& bundleID)>;
    /// Traces as they are found, measured; from the calling thread.
    using OnFound = std::function<void(const std::vector<Trace>&)>;

    OrphanScanner(Ports ports, UserEnvironment user, IsRegistered isRegistered)
        : ports_(ports), user_(std::move(user)), isRegistered_(std::move(isRegistered)) {}

    /// `bundles`: the installed applications. `protectedIDs`: identifiers whose leftovers are left alone.
    /// Of what is streamed some may turn out to belong to an application that came meanwhile, and is missing
    /// in the result. Stopped early it gives no groups at all: nothing was looked at once more.
    OrphanScanResult scan(const std::vector<Path>& bundles, const std::set<std::string>& protectedIDs,
                          const StopToken& stop = {}, const OnFound& onFound = {});

  private:
    bool canSeeApplications(const std::vector<Path>& bundles) const;
    KnownOwners readOwners(const BudgetedFiles& files, const std::vector<Path>& bundles,
                           const StopToken& stop) const;
    KnownOwners ownersSince(const BudgetedFiles& files, const KnownOwners& owners,
                            const StopToken& stop) const;

    Ports ports_;
    UserEnvironment user_;
    IsRegistered isRegistered_;
};

} // namespace tidwen
