#include "operations/screened_move.h"

#include "base/path.h"
#include "platform/file_absence.h"

#include <string>

namespace tidwen {

namespace {

Message failure(const FileError& error) {
    if (error.fault == FileFault::exists) return {"failure.destinationOccupied"};
    return {std::string(failureKey(error.fault))};
}

/// An undo by an ordinary user of what an administrator removed.
bool leadsToAnothers(const JudgedMove& move, const FileSystem& files, const PathPolicy& policy) {
    if (policy.isQuarantineEndpoint(move.destination())) return false;
    const auto own = files.info(move.source().parent()), old = files.info(move.destination().parent());
    return own && old && own->ownerID != old->ownerID;
}

/// A move rarely fails because of the item's own permissions: the text names what the user can do.
Message moveFailure(const FileError& error, const JudgedMove& move, const FileSystem& files,
                    const PathPolicy& policy) {
    const Path& from = move.source();
    if (error.fault == FileFault::exists && error.path != from && error.path != move.destination())
        return {"failure.putBackBeside %@", {error.path.string()}};
    if (error.fault != FileFault::denied) return failure(error);
    const auto item = files.info(from);
    if (item && item->immutable) return {"failure.itemLocked"};
    if (!files.isMovable(from)) return {"failure.notYours"};
    if (leadsToAnothers(move, files, policy)) return {"failure.oldFolderNotYours"};
    const auto folder = files.info(move.destination().parent());
    return {folder && (folder->permissions & 0200) == 0 ? "failure.oldFolderProtected" : guardedBySystemKey};
}

} // namespace

FileResult<void> makeFolderInQuarantine(const Path& folder, FileSystem& files, const PathPolicy& policy) {
    if (!policy.isQuarantineEndpoint(folder)) return {}; // the run's own folder
    if (auto above = makeFolderInQuarantine(folder.parent(), files, policy); !above) return above;
    auto made = files.createDirectory(folder);
    if (made || made.error().fault != FileFault::exists) return made;
    const auto there = files.info(folder);
    return there && there->kind == FileKind::directory ? FileResult<void>() : made;
}

bool hasLostRunFolder(const JudgedMove& move, const FileSystem& files, const PathPolicy& policy) {
    Path folder = move.destination();
    while (policy.isQuarantineEndpoint(folder))
        folder = folder.parent();
    return folder != move.destination() && isMissing(files, folder);
}

bool isAnother(const Path& path, const std::optional<FoundItem>& found, const FileSystem& files) {
    if (!found) return false;
    const auto now = files.info(path);
    return now ? !found->isStill(*now) : now.error().fault != FileFault::missing;
}

std::optional<Message> screenedMove(const operation::Move& move, FileSystem& files, const PathPolicy& policy,
                                    Log& log) {
    const auto judged = policy.checkMove(move.source, move.destination, files);
    if (!judged) {
        log.warning("Move blocked by path policy: {}", judged.error().path);
        return Message{blockedBySafetyPolicyKey};
    }
    if (isAnother(judged->source(), move.found, files)) return Message{changedSinceKey};
    const auto folder = judged->destination().parent();
    const bool entersQuarantine = policy.isQuarantineEndpoint(judged->destination());
    const auto created =
        entersQuarantine ? makeFolderInQuarantine(folder, files, policy) : files.createDirectories(folder);
    const auto gone = Message{quarantineGoneKey};
    if (!created)
        return entersQuarantine && created.error().fault == FileFault::missing ? gone
                                                                               : failure(created.error());
    const auto moved = files.move(judged->source(), judged->destination());
    if (moved && *moved && (*moved)->place == judged->source()) return Message{putBackByAnotherKey};
    if (moved) return std::nullopt;
    if (entersQuarantine && isMissing(files, folder)) return gone;
    // Remove the empty numbered folder, which would count as something in quarantine.
    if (entersQuarantine) (void)files.removeEmptyDirectory(folder);
    return moveFailure(moved.error(), *judged, files, policy);
}

} // namespace tidwen
