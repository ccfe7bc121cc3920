#pragma once

#include "base/message.h"
#include "base/path.h"
#include "base/problem.h"
#include "removal/former_applications.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/protected_apps.h"

#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// What was read of the requested bundles.
struct LoadedTargets {
    std::vector<AppTarget> targets; ///< in the requested order, each bundle once
    std::vector<Problem> failures;  ///< with control characters in names made visible
};

/// An application asked for by its identifier because no bundle of it is installed.
struct GoneApplication {
    std::string bundleID;
    Message otherwise; ///< why the word means nothing, if nothing of it is found
};

/// The target for what a removed application left: without a bundle ("/"). The error is that of
/// `AppTargetLoader` for an application that is no target.
tl::expected<AppTarget, Message> goneTarget(const std::string& bundleID, const FormerApplications& former);
inline bool isGone(const AppTarget& target) {
    return target.bundleURL.isRoot();
}
/// Of what is gone everything is taken that nobody owns, so owners are looked for further inside bundles.
BundleReach reachFor(const std::vector<AppTarget>& targets);

/// Reads the disk; any thread.
LoadedTargets loadTargets(const std::vector<Path>& bundles, const AppTargetLoader& loader);

/// The requested applications, and why some of them were rejected ("Zed.app: This is no …").
struct TargetIntake {
    std::vector<AppTarget> targets; ///< in the requested order, each bundle once
    std::vector<Problem> failures;  ///< with control characters in names made visible
    std::vector<AppTarget> refused; ///< the protected ones among the failures
};

/// Adds the targets of applications that are gone.
void add(const std::vector<GoneApplication>& gone, const FormerApplications& former, LoadedTargets& loaded);

/// How protected applications are handled.
enum class ProtectedTargets {
    refused,
    shown, ///< accepted, for callers that only display them
};

TargetIntake checkProtection(LoadedTargets loaded, const Protection& protection,
                             ProtectedTargets ofProtected = ProtectedTargets::refused);

/// That the application is protected.
Message describeProtected(const AppTarget& target);

} // namespace tidwen
