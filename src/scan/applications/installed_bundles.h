#pragma once

#include "base/path.h"
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
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace tidwen {

struct Bundle;
struct BundleIdentity;
struct BundleMemory;

/// How far one look searches in bundles; every look searches the same places.
enum class BundleReach {
    usual,   ///< where bundles usually hold others: for callers that have names to match
    further, ///< anywhere in them: for callers that claim what appears to have no owner
};

/// A snapshot of all bundles. Their contents are read once, on first use, with what the look left of its
/// budget. Thread-safe; must not outlive the ports of the service that created it.
class BundleSnapshot {
  public:
    /// By location, bundles that need not be opened again to read their contents.
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
    /// Adds the bundles whose contents were read incompletely, except those at `without` (locations).
    BundleCoverage coverageWithContents(const std::set<Path>& without = {}) const;
    /// What the bundle at this index of `bundles` contains. Blocks while it is read.
    const BundleContents& contents(std::size_t index) const;
    /// Reads the contents of all bundles in parallel; incomplete after a stop.
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

/// Finds every bundle where applications and plug-ins really lie: all application folders, including other
/// users', loose applications in a home, the bundles in the Library folders, and those of package managers
/// and build folders. Links are followed to the bundle they name. Bounded in depth and number; does not
/// search inside bundles or the Trash. Caches what it read: a later look reads again only what has changed.
class InstalledBundles {
  public:
    enum class Looks {
        once, ///< no second look is expected, so caching would only cost time
        many,
    };

    /// Each look may spend `limits` unless the files already have a budget.
    InstalledBundles(const FileSystem& files, const CodeSignatures& signatures, UserEnvironment user,
                     Looks looks = Looks::many, ReadBudget::Limits limits = {});

    using Reach = BundleReach;

    /// Reads the disk in parallel and blocks; thread-safe. What an exhausted budget hides is `uncounted`.
    /// `shared`: the budget of the run that the look is a part of.
    std::shared_ptr<const BundleSnapshot> look(Reach reach, const StopToken& stop = {},
                                               const std::optional<ReadBudget>& shared = {});

  private:
    /// For the bundles at these locations, in order; null after a stop.
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
