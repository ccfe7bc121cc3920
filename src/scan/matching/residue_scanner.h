#pragma once

#include "base/log.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/keychain.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "platform/user_environment.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/size_measurer.h"
#include "scan/policy/removability.h"
#include "scan/policy/search_location.h"

#include <memory>
#include <mutex>
#include <set>
#include <vector>

namespace tidwen {

class TraceCollector;
struct ScanContext;

/// Finds everything that an application left behind. Never fails: what could not be read is in the result.
/// One scan at a time; concurrent calls wait.
class ResidueScanner {
  public:
    struct Ports {
        const FileSystem& files;
        const Receipts& receipts;
        const Keychain& keychain;
        const SystemExtensions& systemExtensions;
        const Texts& texts;
        Log& log;
    };

    /// `bundles`: everything on this Mac that may own data; null when other owners are to be ignored.
    /// `rights`: who can move what this process may not.
    ResidueScanner(Ports ports, UserEnvironment user, std::shared_ptr<const BundleSnapshot> bundles,
                   MoveRights rights = MoveRights::administrator);

    /// A target without a bundle ("/") is gone: only its leftovers are found, and all are contested if
    /// another bundle has or embeds its identifier after all. `together`: the applications to be removed in
    /// the same run, including the target or not. They contest nothing among themselves, unless they cannot
    /// be removed. `onStep`: a step is one search location or, at the end, one source other than a folder;
    /// its kind is a category.
    ScanResult scan(const AppTarget& target, const StopToken& stop = {},
                    const std::vector<AppTarget>& together = {}, const OnStep& onStep = {});

  private:
    class Steps;
    /// What was searched for besides files, and what could not be read of it.
    void probeOtherSources(const ScanContext& context, const Receipts& receipts, Steps& steps,
                           TraceCollector& traces, ScanResult& result) const;
    void conclude(const ScanContext& context, const std::set<Path>& leaving,
                  const std::vector<LaunchItem>& jobs, TraceCollector& traces, ScanResult& result) const;

    Ports ports_;
    UserEnvironment user_;
    std::shared_ptr<const BundleSnapshot> bundles_;
    MoveRights rights_;
    std::mutex oneAtATime_;
};

} // namespace tidwen
