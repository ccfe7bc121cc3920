#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"
#include "scan/applications/bundle_memory.h"
#include "scan/applications/bundle_places.h"

#include <map>
#include <vector>

namespace tidwen {

/// What a search for bundles found, and where it could not look.
struct FoundBundles {
    std::map<Path, std::vector<Path>> names; ///< place without links → the names it was found under
    std::vector<Path>
        unreadable; ///< folders that could not be listed, and links to applications that are away
    std::vector<Path> uncounted; ///< folders whose search stopped at a bound, by `stop` or on a spent budget
    std::vector<Path> listed;    ///< the places that are there and were listed themselves
};

/// Looks for bundles in the places, level by level, in parallel. Never into bundles, but into folders that
/// are only called like one; a link is followed to the bundle it names. Each place has a bound of its own, so
/// that one that was made to have no end does not hide the others. Folders that have not changed since
/// `memory` saw them are not listed again; on a spent budget the places that are left are `uncounted`.
FoundBundles searchBundles(const FileSystem& files, const ReadBudget& budget, BundleMemory& memory,
                           const std::vector<BundlePlace>& places, const StopToken& stop = {});

} // namespace tidwen
