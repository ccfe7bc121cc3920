#include "quarantine/trash_lock.h"

#include "quarantine/quarantine_layout.h"
#include "scan/permissions/full_disk_access.h"

#include <string>
#include <utility>

namespace tidwen {

std::optional<Message> whyTrashIsUnusable(const UserEnvironment& user, const FileSystem& files) {
    if (auto closed = whyNothingMoves(user, files)) return closed;
    // A Trash that is a link would redirect quarantine folders to an unchecked place.
    const auto trash = files.info(user.trash());
    if (trash && trash->kind != FileKind::directory) {
        const bool isLink = trash->kind == FileKind::symbolicLink;
        return describeNotBegun(
            {.fault = isLink ? FileFault::throughLink : FileFault::notDirectory, .path = user.trash()});
    }
    if (!trash) return std::nullopt;
    const auto entries = files.list(user.trash());
    return entries ? std::nullopt : std::optional(describeNotBegun(entries.error()));
}

tl::expected<std::unique_ptr<FolderLock>, Message> lockTrash(const UserEnvironment& user, FileSystem& files) {
    if (auto unusable = whyTrashIsUnusable(user, files)) return tl::unexpected(std::move(*unusable));
    if (auto made = files.createDirectories(user.trash()); !made)
        return tl::unexpected(describeNotBegun(made.error()));
    return files.lock(user.trash()).map_error(describeNotBegun);
}

Message describeNotBegun(const FileError& error) {
    if (error.fault == FileFault::busy) return {"failure.trashBusy"};
    // A folder for the run could not be made; its name would tell nobody anything.
    if (error.fault == FileFault::denied && hasRunName(error.path))
        return {"failure.trashDenied %@", {error.path.parent().string()}};
    return {"failure.notBegun %@ %@", {error.path.string(), Message{std::string(failureKey(error.fault))}}};
}

} // namespace tidwen
