#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"
#include "scan/applications/bundle_memory.h"
#include "scan/applications/bundle_places.h"

#include <map>
#include <vector>

namespace tidwen {

/// The bundles found by a search, and where it was blocked.
struct FoundBundles {
    std::map<Path, std::vector<Path>> names; ///< location without links → the paths it was found under
    std::vector<Path>
        unreadable; ///< folders that could not be listed, and links to applications on a missing disk
    std::vector<Path>
        uncounted; ///< folders whose search stopped at a limit, by `stop` or on an exhausted budget
    std::vector<Path> listed; ///< the places that exist and were listed themselves
};

/// Searches the places for bundles, level by level, in parallel. Does not enter bundles, but does enter
/// folders that only have a bundle's extension; a link is followed to the bundle it names. Each place has its
/// own limit, so an endless one does not hide the others. Folders unchanged since `memory` saw them are not
/// listed again; when the budget is exhausted the remaining places are `uncounted`.
FoundBundles searchBundles(const FileSystem& files, const ReadBudget& budget, BundleMemory& memory,
                           const std::vector<BundlePlace>& places, const StopToken& stop = {});

} // namespace tidwen
