#pragma once

#include "scan/applications/launch_item.h"
#include "scan/matching/scan_context.h"
#include "scan/matching/scan_result.h"

#include <vector>

namespace tidwen {

/// Marks the finds that an application which nobody could see may own (`Trace::ownerUnsure`).
///
/// Of an installed application, while /Applications was not listed to its end: all but its bundle and what
/// has exactly its identifier, because a longer identifier or a name may be another's. Of one that is gone:
/// all, while any place of applications is unknown, for it may be there, and while a job of it may still
/// start.
void markUnseenOwners(const ScanContext& context, const std::vector<LaunchItem>& jobs, ScanResult& result);

} // namespace tidwen
