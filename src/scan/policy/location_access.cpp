#include "scan/policy/location_access.h"

#include "base/path.h"

namespace tidwen {

namespace {

/// Whether the folder is just missing: nothing obstructs its path up to the first existing parent, which is a
/// folder. A broken link exists itself and is not absent.
bool isAbsent(Path folder, const FileSystem& files) {
    for (;; folder = folder.parent()) {
        const auto info = files.info(folder);
        if (info) return files.isDirectoryFollowingLinks(folder);
        if (info.error().fault != FileFault::missing || folder.isRoot()) return false;
    }
}

} // namespace

LocationAccess accessTo(const Path& folder, const FileSystem& files, const PathPolicy& policy) {
    const auto real = files.resolve(folder);
    if (!real) return isAbsent(folder, files) ? LocationAccess::absent : LocationAccess::closed;
    if (!files.isDirectoryFollowingLinks(folder)) return LocationAccess::closed;
    const bool leadsAstray = *real != folder.standardized() && policy.check(*real / "item");
    return leadsAstray ? LocationAccess::closed : LocationAccess::open;
}

} // namespace tidwen
