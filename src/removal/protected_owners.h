#pragma once

#include "scan/applications/protected_apps.h"
#include "scan/matching/scan_result.h"

namespace tidwen {

/// Marks the finds that have or continue a protected identifier (`Trace::ownerUnsure`): its application may
/// be on a disk that is away, or not be installed yet. Not for what the target's own identifier continues.
void markProtectedOwners(ScanResult& result, const Protection& protection);

} // namespace tidwen
