#include "quarantine/interrupted_move.h"

#include "platform/move_remains.h"

#include <algorithm>
#include <optional>
#include <set>

namespace tidwen {

namespace {

/// A copy that stayed in the item's folder: its original may stand aside on a disk that is away.
bool mayHoldACopy(const Path& folder, const FileSystem& files) {
    const auto entries = files.list(folder);
    if (!entries) return entries.error().fault != FileFault::missing;
    return std::ranges::any_of(*entries, [](const DirectoryEntry& entry) {
        return std::string_view(entry.name).starts_with(growingCopyPrefix);
    });
}

enum class Place { inQuarantine, elsewhere, unknown };

Place placeOf(const Path& destination, const FileSystem& files) {
    const auto item = files.info(destination);
    if (item) return Place::inQuarantine;
    return item.error().fault == FileFault::missing ? Place::elsewhere : Place::unknown;
}

/// Both names of one item, of which a move by a hard link has yet to take the old one away.
bool isOneItem(const Path& a, const Path& b, const FileSystem& files) {
    const auto first = files.info(a), second = files.info(b);
    return first && second && first->device == second->device && first->inode == second->inode;
}

bool isSettled(const ManifestEntry& entry, Place place, const FileSystem& files) {
    const Path source(entry.source), destination(*entry.destination);
    if (place == Place::unknown || files.isSetAside(source)) return false;
    if (place == Place::inQuarantine) return !isOneItem(source, destination, files);
    return !mayHoldACopy(destination.parent(), files);
}

/// What stays of the original of a move that arrived. What cannot be settled now stays where it is and is
/// found the next time.
std::optional<MoveRemains> settled(const Path& from, const Path& to, FileSystem& files,
                                   const PathPolicy& policy) {
    if (policy.checkMove(from, to, files)) return std::nullopt;
    // Moves go along resolved parents, so that is where their remains lie.
    const auto realFrom = files.resolveParent(from);
    const auto realTo = files.resolveParent(to);
    if (!realFrom || !realTo) return std::nullopt;
    return files.settleInterruptedMove(*realFrom, *realTo).value_or(std::nullopt);
}

} // namespace

std::optional<MoveRemains> settleInterruptedMove(const Path& from, const Path& to, FileSystem& files,
                                                 const PathPolicy& policy) {
    return settled(from, to, files, policy);
}

void settleInterruptedMoves(const std::vector<ManifestEntry>& planned, StrayWrites strayWrites,
                            FileSystem& files, const PathPolicy& policy) {
    for (const auto& entry : planned) {
        if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
        const auto remains = settled(Path(entry.source), Path(*entry.destination), files, policy);
        const bool isStray = remains && remains->fault == FileFault::busy;
        if (!isStray || strayWrites == StrayWrites::stayAside) continue;
        if (const auto real = files.resolveParent(Path(entry.source))) (void)files.revealRemains(*real);
    }
}

RunObservation observe(const std::vector<ManifestEntry>& planned, const FileSystem& files) {
    RunObservation seen;
    std::vector<bool> observed;
    std::set<std::string> movedPaths;
    for (const auto& entry : planned) {
        const bool isMove = entry.kind == ManifestEntryKind::move && entry.destination;
        const auto place = isMove ? placeOf(Path(*entry.destination), files) : Place::elsewhere;
        observed.push_back(place == Place::inQuarantine);
        if (observed.back()) movedPaths.insert(entry.source);
        if (isMove && !isSettled(entry, place, files)) seen.unsettled.push_back(entry);
    }
    for (std::size_t i = 0; i < planned.size(); ++i) {
        const auto& entry = planned[i];
        const bool isUnloadedJob = entry.kind == ManifestEntryKind::bootout && entry.plistPath
                                   && movedPaths.contains(*entry.plistPath);
        if (observed[i] || isUnloadedJob) seen.entries.push_back(entry);
    }
    return seen;
}

} // namespace tidwen
