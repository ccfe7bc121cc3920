#pragma once

#include "base/path.h"
#include "platform/receipts.h"
#include "scan/matching/scan_context.h"
#include "scan/matching/trace_collector.h"

#include <vector>

namespace tidwen {

/// What the target's installer packages put on the disk, as listed in their receipts, and still exists.
///
/// A receipt also lists shared folders on the way, every file inside the bundle, and places that have since
/// changed owners. So a folder counts as a whole only when its own name matches the target or it is a bundle;
/// in other folders only the listed files count. In the user's home, where packages should not install, only
/// items with the target's name count. A bundle with another identifier belongs to its own application, and
/// one that only the list names is marked like a file. Nothing inside the target's bundle, inside another
/// application (`applications`: their locations) or inside an earlier find is listed again.
///
/// Returns the files of unreadable receipts, whose listed items may remain.
std::vector<Path> probeReceipts(const ScanContext& context, const Receipts& receipts,
                                const std::vector<Path>& applications, TraceCollector& traces);

} // namespace tidwen
