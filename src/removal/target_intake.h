#pragma once

#include "base/message.h"
#include "base/path.h"
#include "base/problem.h"
#include "scan/applications/app_target.h"
#include "scan/applications/protected_apps.h"

#include <vector>

namespace tidwen {

/// What was read of the requested bundles.
struct LoadedTargets {
    std::vector<AppTarget> targets; ///< in the requested order, each bundle once
    std::vector<Problem> failures;  ///< with control characters in names made visible
};

/// Reads the disk; any thread.
LoadedTargets loadTargets(const std::vector<Path>& bundles, const AppTargetLoader& loader);

/// The requested applications, and why some of them were rejected ("Zed.app: This is no …").
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

TargetIntake takeIn(LoadedTargets loaded, const Protection& protection,
                    ProtectedTargets ofProtected = ProtectedTargets::refused);

/// That the application is protected.
Message describeProtected(const AppTarget& target);

} // namespace tidwen
