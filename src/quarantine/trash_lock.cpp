#include "quarantine/trash_lock.h"

namespace tidwen {

FileResult<std::unique_ptr<FolderLock>> lockTrash(const UserEnvironment& user, FileSystem& files) {
    // A Trash that is a link would put what is ours in a place that nobody judged.
    const auto trash = files.info(user.trash());
    if (trash && trash->kind != FileKind::directory) {
        const bool isLink = trash->kind == FileKind::symbolicLink;
        return tl::unexpected(FileError{.fault = isLink ? FileFault::throughLink : FileFault::notDirectory,
                                        .path = user.trash()});
    }
    if (auto made = files.createDirectories(user.trash()); !made) return tl::unexpected(made.error());
    return files.lock(user.trash());
}

Message describeNotBegun(const FileError& error, const Texts& texts) {
    if (error.fault == FileFault::busy) return {"failure.trashBusy"};
    return {"failure.notBegun %@ %@", {error.path.string(), texts.text(failureKey(error.fault))}};
}

} // namespace tidwen
