#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "cli/host_paths.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "scan/app_target.h"
#include "scan/other_applications.h"
#include "scan/protected_apps.h"

#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Finds the application that a word on the command line means: an absolute Mac path of a bundle, the
/// identifier, name or bundle file name of an installed application (letter case ignored, ".app" may be left
/// out), or a path of this machine that leads to one on the volume.
class ApplicationFinder {
  public:
    ApplicationFinder(const FileSystem& files, const std::vector<InstalledIdentity>& installed,
                      HostPaths hostPaths)
        : files_(files), installed_(installed), hostPaths_(std::move(hostPaths)) {}

    /// The reason names the candidates when the word means several, and close ones when it means none.
    tl::expected<Path, Message> find(const std::string& word) const;

  private:
    std::vector<Path> withIdentifier(const std::string& folded) const;
    std::vector<Path> withName(const std::string& folded) const;
    std::vector<std::string> similarNames(const std::string& folded) const;

    const FileSystem& files_;
    const std::vector<InstalledIdentity>& installed_;
    HostPaths hostPaths_;
};

/// Applications that were asked for, and a line for each that cannot be taken ("Zed.app: This is no …").
struct Intake {
    std::vector<AppTarget> targets; ///< in the order asked for, each bundle once
    std::vector<std::string> failures;
};

Intake loadTargets(const std::vector<std::string>& words, const ApplicationFinder& finder,
                   const AppTargetLoader& loader, const ProtectedApps& protectedApps, const Texts& texts);

} // namespace tidwen
