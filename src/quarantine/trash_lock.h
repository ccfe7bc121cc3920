#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <memory>
#include <optional>

namespace tidwen {

/// One Tidwen at a time may remove, undo or purge in a user's Trash. `busy` while another one does; the lock
/// ends with this object or its process, however that ends. The Trash is created when it is missing.
FileResult<std::unique_ptr<FolderLock>> lockTrash(const UserEnvironment& user, FileSystem& files);

/// Why the Trash cannot take anything: it is a link, no folder, or closed to this account. Nothing when it
/// can be used, is missing, or when only an attempt could tell. Changes nothing.
std::optional<FileError> whyTrashIsUnusable(const UserEnvironment& user, const FileSystem& files);

/// Why a removal, an undo or a purge was not begun: another Tidwen is at work there, or the Trash cannot be
/// used.
Message describeNotBegun(const FileError& error, const Texts& texts);

} // namespace tidwen
