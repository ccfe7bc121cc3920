#pragma once

#include "base/stop_token.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"
#include "platform/user_environment.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/applications/owning_bundle.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace tidwen {

struct Bundle;
struct BundleIdentity;
struct BundleMemory;

/// How far one look goes.
enum class BundleReach {
    usual,   ///< where Macs and makers put bundles: for whoever has names of his own to go by
    further, ///< also deeper, in folders and in bundles: for whoever claims what nobody seems to own
};

/// One look at all bundles. What they carry is read once, when it is first asked for, and spends what the
/// look left of its budget. May be used from any thread; must not outlive the ports of the service that made
/// it.
class BundleSnapshot {
  public:
    /// By place, bundles that need not be opened again for their contents.
    using Opened = std::map<Path, std::shared_ptr<const Bundle>>;

    BundleSnapshot(const FileSystem& files, const CodeSignatures& signatures,
                   std::vector<OwningBundle> bundles, BundleCoverage coverage,
                   BundleReach reach = BundleReach::usual, std::shared_ptr<BundleMemory> memory = nullptr,
                   const ReadBudget& budget = {}, Opened opened = {});
    ~BundleSnapshot();
    BundleSnapshot(const BundleSnapshot&) = delete;
    BundleSnapshot& operator=(const BundleSnapshot&) = delete;

    /// Sorted by `url`.
    const std::vector<OwningBundle>& bundles() const { return bundles_; }
    /// Of the search alone.
    const BundleCoverage& coverage() const { return coverage_; }
    /// That and the bundles whose contents were read, and not all could be; but those at `without` (places).
    BundleCoverage coverageWithContents(const std::set<Path>& without = {}) const;
    /// What the bundle at this place in `bundles` carries. Blocks while it is read.
    const BundleContents& contents(std::size_t index) const;
    /// Reads the contents of all bundles, in parallel. After a stop they are incomplete.
    void readAllContents(const StopToken& stop) const;

  private:
    struct LazyContents;
    const BundleContents& contents(std::size_t index, const StopToken& stop) const;
    std::shared_ptr<const BundleContents> readContents(const Path& bundle, const StopToken& stop) const;

    const FileSystem& files_;
    const CodeSignatures& signatures_;
    BundleReach reach_;
    ReadBudget budget_;
    std::shared_ptr<BundleMemory> memory_;
    std::vector<OwningBundle> bundles_;
    BundleCoverage coverage_;
    Opened opened_;
    std::unique_ptr<LazyContents[]> contents_;
};

/// Knows every bundle that can be found where applications and plug-ins really lie: all folders of
/// applications, also of other users, loose applications in a home, the bundles in the Library folders, and
/// those of package managers and build folders. Links are followed to the bundle they name. Bounded in depth
/// and count; the insides of bundles and the Trash are not searched. Remembers what it read: a later look
/// reads again only what has changed.
class InstalledBundles {
  public:
    enum class Looks {
        once, ///< there will hardly be another: remembering would only cost time
        many,
    };

    /// Each look may spend `limits`, when the files do not have a budget of their own.
    InstalledBundles(const FileSystem& files, const CodeSignatures& signatures, UserEnvironment user,
                     Looks looks = Looks::many, ReadBudget::Limits limits = {});

    using Reach = BundleReach;

    /// Blocks while the disk is read, in parallel; any thread. What a spent budget hides is `uncounted`.
    std::shared_ptr<const BundleSnapshot> look(Reach reach, const StopToken& stop = {});

  private:
    /// Of the bundles at these places, in their order; null after a stop.
    std::vector<std::shared_ptr<const BundleIdentity>>
    readIdentities(const std::vector<std::pair<Path, std::vector<Path>>>& bundles, const ReadBudget& budget,
                   const StopToken& stop);

    const FileSystem& files_;
    const CodeSignatures& signatures_;
    UserEnvironment user_;
    Looks looks_;
    ReadBudget::Limits limits_;
    std::shared_ptr<BundleMemory> memory_;
};

} // namespace tidwen
