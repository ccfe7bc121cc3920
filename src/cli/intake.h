#pragma once

#include "base/message.h"
#include "cli/command.h"
#include "cli/console.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "program/host_paths.h"
#include "removal/target_intake.h"
#include "scan/matching/other_applications.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// What a word that names an application stands for in the user's settings.
struct NamedIdentifier {
    std::string bundleID;
    bool isInstalled = false;
};

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

    /// The identifier by which the user's decisions about that application are kept, as its bundle spells it.
    /// An identifier that nothing installed has is taken as it stands: its application may come later.
    tl::expected<NamedIdentifier, Message> findIdentifier(const std::string& word) const;

  private:
    tl::expected<std::string, Message> identifierOf(const Path& bundle) const;
    bool leadsNowhere(const Path& path) const;
    std::optional<Path> linkCalled(const std::string& folded) const;
    std::vector<Path> withIdentifier(const std::string& folded) const;
    std::vector<Path> withName(const std::string& folded) const;
    std::vector<std::string> similarNames(const std::string& folded) const;

    const FileSystem& files_;
    const std::vector<InstalledIdentity>& installed_;
    HostPaths hostPaths_;
};

/// How to take the protection off an application.
std::string unprotectHint(const AppTarget& target, const CommandContext& context);

/// Bundles that words on the command line mean, and a line for each word that means none.
struct NamedBundles {
    std::vector<Path> bundles;
    std::vector<Problem> failures;
};

NamedBundles findBundles(const std::vector<std::string>& words, const ApplicationFinder& finder);

/// The applications that words mean, loaded; the failures of both steps in one list.
TargetIntake loadTargets(const std::vector<std::string>& words, const ApplicationFinder& finder,
                         const AppTargetLoader& loader, const ProtectedApps& protectedApps);

} // namespace tidwen
