#pragma once

#include "base/message.h"
#include "base/path.h"
#include "base/problem.h"
#include "cli/command.h"
#include "cli/console.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "program/host_paths.h"
#include "removal/target_intake.h"
#include "scan/applications/app_target.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/other_applications.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// The application a word means, as identified in the user's settings.
struct NamedIdentifier {
    std::string bundleID;
    bool isInstalled = false;
};

/// Finds the application that a word on the command line means: an absolute Mac path of a bundle; the
/// identifier, name or bundle file name of an installed application (ignoring case, ".app" optional); or a
/// path of this machine to one on the volume.
class ApplicationFinder {
  public:
    ApplicationFinder(const FileSystem& files, const std::vector<InstalledIdentity>& installed,
                      HostPaths hostPaths)
        : files_(files), installed_(installed), hostPaths_(std::move(hostPaths)) {}

    /// The error lists the candidates if the word is ambiguous, and similar names if it matches none.
    tl::expected<Path, Message> find(const std::string& word) const;

    /// The identifier for settings about that application, as its bundle spells it. An identifier of no
    /// installed application is accepted unchanged: the application may be installed later.
    tl::expected<NamedIdentifier, Message> findIdentifier(const std::string& word) const;

  private:
    tl::expected<std::string, Message> identifierOf(const Path& bundle) const;
    bool leadsNowhere(const Path& path) const;
    Path placeCalled(const std::string& path) const;
    std::optional<Path> linkCalled(const std::string& folded) const;
    std::optional<Path> spelledAs(const Path& path) const;
    std::vector<Path> withIdentifier(const std::string& folded) const;
    std::vector<Path> withName(const std::string& folded) const;
    std::vector<std::string> similarNames(const std::string& folded) const;

    const FileSystem& files_;
    const std::vector<InstalledIdentity>& installed_;
    HostPaths hostPaths_;
};

/// How to remove an application's protection.
std::string unprotectCommand(const AppTarget& target, const CommandContext& context);

/// Bundles that words on the command line mean, and a problem for each word that matches none.
struct NamedBundles {
    std::vector<Path> bundles;
    std::vector<GoneApplication> gone; ///< words that are identifiers and match nothing installed
    std::vector<Problem> failures;
};

NamedBundles findBundles(const std::vector<std::string>& words, const ApplicationFinder& finder);

/// Finds and loads the applications that words mean; the failures of both steps in one list.
TargetIntake loadTargets(const std::vector<std::string>& words, const ApplicationFinder& finder,
                         const AppTargetLoader& loader, const Protection& protection);

} // namespace tidwen
