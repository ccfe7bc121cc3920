#include "quarantine/trash_lock.h"

namespace tidwen {

FileResult<std::unique_ptr<FolderLock>> lockTrash(const UserEnvironment& user, FileSystem& files) {
    if (auto made = files.createDirectories(user.trash()); !made) return tl::unexpected(made.error());
    return files.lock(user.trash());
}

} // namespace tidwen
