#include "removal/unmovable_items.h"

#include "base/path.h"

#include <algorithm>
#include <set>
#include <variant>

namespace tidwen {

namespace {

/// A missing item is no permission problem. A locked item is immovable for an administrator too.
bool isImmovable(const Path& item, bool asAdministrator, const FileSystem& files) {
    const auto info = files.info(item);
    if (!info && info.error().fault == FileFault::missing) return false;
    return asAdministrator ? info && info->immutable : !files.isMovable(item);
}

} // namespace

std::vector<Path> unmovableItems(const std::vector<RemovalOperation>& plan, const FileSystem& files,
                                 MoveRights rights) {
    std::set<Path> bundles;
    std::vector<Path> immovable;
    std::size_t moves = 0;
    for (const auto& each : plan) {
        if (const auto* app = std::get_if<operation::UnregisterApp>(&each.kind))
            bundles.insert(app->bundleURL.standardized());
        const auto* move = std::get_if<operation::Move>(&each.kind);
        if (!move) continue;
        ++moves;
        const bool asAdministrator = each.requiresRoot && rights == MoveRights::administrator;
        if (isImmovable(move->source, asAdministrator, files)) immovable.push_back(move->source);
    }
    const bool keepsAnApplication = std::any_of(immovable.begin(), immovable.end(), [&](const Path& item) {
        return bundles.contains(item.standardized());
    });
    return keepsAnApplication || immovable.size() == moves ? immovable : std::vector<Path>();
}

} // namespace tidwen
