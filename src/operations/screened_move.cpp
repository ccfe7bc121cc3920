#include "operations/screened_move.h"

namespace tidwen {

namespace {

Message failure(const FileError& error) {
    if (error.fault == FileFault::exists) return {"failure.destinationOccupied"};
    return {std::string(failureKey(error.fault))};
}

/// What forbids a move is rarely the item's own permissions: the words name what can be done about it.
Message moveFailure(const FileError& error, const operation::Move& move, const FileSystem& files) {
    const Path& from = move.source;
    if (error.fault == FileFault::exists && error.path != from && error.path != move.destination)
        return {"failure.putBackBeside %@", {error.path.string()}};
    if (error.fault != FileFault::denied) return failure(error);
    const auto item = files.info(from);
    if (item && item->immutable) return {"failure.itemLocked"};
    return files.isMovable(from) ? failure(error) : Message{"failure.notYours"};
}

/// The path with the links of its parents resolved as far down as they exist: what is missing below will be
/// created as plain folders, or refused when a dangling link stands in the way.
FileResult<Path> resolveExistingParents(const Path& path, const FileSystem& files) {
    std::string missingPart = path.lastComponent();
    for (Path folder = path.parent();; folder = folder.parent()) {
        const auto resolved = files.resolve(folder);
        if (resolved) return *resolved / missingPart;
        if (resolved.error().fault != FileFault::missing || folder.isRoot())
            return tl::unexpected(resolved.error());
        missingPart.insert(0, folder.lastComponent() + "/");
    }
}

Message blocked(const std::string& path, Log& log) {
    log.warning("Move blocked by path policy: {}", path);
    return {blockedBySafetyPolicyKey};
}

} // namespace

std::optional<Message> screenedMove(const operation::Move& move, FileSystem& files, const PathPolicy& policy,
                                    Log& log) {
    if (const auto violation = policy.checkMove(move.source, move.destination, files))
        return blocked(violation->path, log);

    const auto from = files.resolveParent(move.source);
    if (!from) return failure(from.error());
    const auto to = resolveExistingParents(move.destination, files);
    if (!to) return failure(to.error());

    // The policy resolved links on its own a moment ago; one that was turned in between led it elsewhere.
    const bool leavesQuarantine = policy.isQuarantineEndpoint(move.source);
    const Path& quarantined = leavesQuarantine ? *from : *to;
    const Path& real = leavesQuarantine ? *to : *from;
    if (!policy.isQuarantineEndpoint(quarantined)) return blocked(quarantined.string(), log);
    if (policy.check(real, true)) return blocked(real.string(), log);

    if (const auto created = files.createDirectories(to->parent()); !created) return failure(created.error());
    const auto moved = files.move(*from, *to);
    if (moved) return std::nullopt;
    // The numbered folder that waits for nothing would count as something in quarantine.
    if (!leavesQuarantine) (void)files.removeEmptyDirectory(to->parent());
    return moveFailure(moved.error(), {*from, *to}, files);
}

} // namespace tidwen
