#pragma once

#include "platform/receipts.h"
#include "scan/matching/scan_context.h"
#include "scan/matching/trace_collector.h"

#include <vector>

namespace tidwen {

/// What the installer packages of the target put on the disk, as their receipts list it, and is still there.
///
/// A receipt also names the shared folders it passed through, every file inside the bundle, and places that
/// became somebody else's since. So a folder counts as a whole only when its own name is the target's or it
/// is a bundle; of other folders only the listed files do. In the user's home, where packages have no
/// business, only what bears the target's name. A bundle of another identifier is that one's, and one that
/// only the list names is marked like a file. Nothing inside the target's bundle, inside another application
/// (`applications`: where they lie) or inside what was found before is listed again.
///
/// Gives the files of receipts that cannot be read, so that what they list may remain.
std::vector<Path> probeReceipts(const ScanContext& context, const Receipts& receipts,
                                const std::vector<Path>& applications, TraceCollector& traces);

} // namespace tidwen
