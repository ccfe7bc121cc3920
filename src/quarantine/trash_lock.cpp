#include "quarantine/trash_lock.h"

#include <tl/expected.hpp>

namespace tidwen {

std::optional<FileError> whyTrashIsUnusable(const UserEnvironment& user, const FileSystem& files) {
    // A Trash that is a link would redirect quarantine folders to an unchecked place.
    const auto trash = files.info(user.trash());
    if (trash && trash->kind != FileKind::directory) {
        const bool isLink = trash->kind == FileKind::symbolicLink;
        return FileError{.fault = isLink ? FileFault::throughLink : FileFault::notDirectory,
                         .path = user.trash()};
    }
    if (!trash) return std::nullopt;
    const auto entries = files.list(user.trash());
    return entries ? std::nullopt : std::optional(entries.error());
}

FileResult<std::unique_ptr<FolderLock>> lockTrash(const UserEnvironment& user, FileSystem& files) {
    if (auto unusable = whyTrashIsUnusable(user, files)) return tl::unexpected(std::move(*unusable));
    if (auto made = files.createDirectories(user.trash()); !made) return tl::unexpected(made.error());
    return files.lock(user.trash());
}

Message describeNotBegun(const FileError& error, const Texts& texts) {
    if (error.fault == FileFault::busy) return {"failure.trashBusy"};
    return {"failure.notBegun %@ %@", {error.path.string(), texts.text(failureKey(error.fault))}};
}

} // namespace tidwen
