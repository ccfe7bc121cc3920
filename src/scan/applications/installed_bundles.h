#pragma once

#include "base/stop_token.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/applications/owning_bundle.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace tidwen {

/// One look at all bundles. Immutable; what they carry is read once, when it is first asked for. May be used
/// from any thread; must not outlive the ports of the service that made it.
class BundleSnapshot {
  public:
    BundleSnapshot(const FileSystem& files, const CodeSignatures& signatures,
                   std::vector<OwningBundle> bundles, BundleCoverage coverage);
    ~BundleSnapshot();
    BundleSnapshot(const BundleSnapshot&) = delete;
    BundleSnapshot& operator=(const BundleSnapshot&) = delete;

    /// Sorted by `url`.
    const std::vector<OwningBundle>& bundles() const { return bundles_; }
    const BundleCoverage& coverage() const { return coverage_; }
    /// What the bundle at this place in `bundles` carries. Blocks while it is read.
    const BundleContents& contents(std::size_t index) const;
    /// Reads the contents of all bundles, in parallel. After a stop they are incomplete.
    void readAllContents(const StopToken& stop) const;

  private:
    struct LazyContents;
    const BundleContents& contents(std::size_t index, const StopToken& stop) const;

    const FileSystem& files_;
    const CodeSignatures& signatures_;
    std::vector<OwningBundle> bundles_;
    BundleCoverage coverage_;
    std::unique_ptr<LazyContents[]> contents_;
};

/// Knows every bundle that can be found where applications and plug-ins really lie: all folders of
/// applications, also of other users, loose applications in a home, the bundles in the Library folders, and
/// those of package managers and build folders. Links are followed to the bundle they name. Bounded in depth
/// and count; the insides of bundles and the Trash are not searched.
class InstalledBundles {
  public:
    InstalledBundles(const FileSystem& files, const CodeSignatures& signatures, UserEnvironment user)
        : files_(files), signatures_(signatures), user_(std::move(user)) {}

    /// Blocks while the disk is read, in parallel; any thread.
    std::shared_ptr<const BundleSnapshot> look(const StopToken& stop = {});

  private:
    const FileSystem& files_;
    const CodeSignatures& signatures_;
    UserEnvironment user_;
};

} // namespace tidwen
