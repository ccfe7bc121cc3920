#include "operations/screened_move.h"

namespace tidwen {

namespace {

Message failure(const FileError& error) {
    if (error.fault == FileFault::exists) return {"failure.destinationOccupied"};
    return {std::string(failureKey(error.fault))};
}

/// What forbids a move is rarely the item's own permissions: the words name what can be done about it.
Message moveFailure(const FileError& error, const JudgedMove& move, const FileSystem& files) {
    const Path& from = move.source();
    if (error.fault == FileFault::exists && error.path != from && error.path != move.destination())
        return {"failure.putBackBeside %@", {error.path.string()}};
    if (error.fault != FileFault::denied) return failure(error);
    const auto item = files.info(from);
    if (item && item->immutable) return {"failure.itemLocked"};
    return files.isMovable(from) ? failure(error) : Message{"failure.notYours"};
}

} // namespace

std::optional<Message> screenedMove(const operation::Move& move, FileSystem& files, const PathPolicy& policy,
                                    Log& log) {
    const auto judged = policy.checkMove(move.source, move.destination, files);
    if (!judged) {
        log.warning("Move blocked by path policy: {}", judged.error().path);
        return Message{blockedBySafetyPolicyKey};
    }
    const auto folder = judged->destination().parent();
    if (const auto created = files.createDirectories(folder); !created) return failure(created.error());
    const auto moved = files.move(judged->source(), judged->destination());
    if (moved) return std::nullopt;
    // The numbered folder that waits for nothing would count as something in quarantine.
    if (policy.isQuarantineEndpoint(judged->destination())) (void)files.removeEmptyDirectory(folder);
    return moveFailure(moved.error(), *judged, files);
}

} // namespace tidwen
