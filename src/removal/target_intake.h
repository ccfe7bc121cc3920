#pragma once

#include "base/problem.h"
#include "scan/applications/protected_apps.h"

#include <vector>

namespace tidwen {

/// What was read of the bundles that were asked for.
struct LoadedTargets {
    std::vector<AppTarget> targets; ///< in the order asked for, each bundle once
    std::vector<Problem> failures;  ///< names in them have their control characters made visible
};

/// Reads the disk; any thread.
LoadedTargets loadTargets(const std::vector<Path>& bundles, const AppTargetLoader& loader);

/// Applications that were asked for, and why some of them cannot be taken ("Zed.app: This is no …").
struct TargetIntake {
    std::vector<AppTarget> targets; ///< in the requested order, each bundle once
    std::vector<Problem> failures;  ///< with control characters in names made visible
    std::vector<AppTarget> refused; ///< the protected ones among the failures
};

/// How protected applications are handled.
enum class ProtectedTargets {
    refused,
    shown, ///< accepted, for callers that only display them
};

TargetIntake takeIn(LoadedTargets loaded, const ProtectedApps& protectedApps,
                    ProtectedTargets ofProtected = ProtectedTargets::refused);

/// That the application is protected.
Message describeProtected(const AppTarget& target);

} // namespace tidwen
