#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <memory>
#include <optional>

namespace tidwen {

/// Only one Tidwen at a time may remove, undo or purge in a user's Trash: `busy` while another one does. The
/// lock ends with this object or its process. Creates a missing Trash.
FileResult<std::unique_ptr<FolderLock>> lockTrash(const UserEnvironment& user, FileSystem& files);

/// Why the Trash is unusable: it is a link, not a folder, or closed to this account. nullopt when it is
/// usable, missing, or when only an attempt could tell. Changes nothing.
std::optional<FileError> whyTrashIsUnusable(const UserEnvironment& user, const FileSystem& files);

/// Why a removal, undo or purge was not begun: another Tidwen is running there, or the Trash is unusable.
Message describeNotBegun(const FileError& error, const Texts& texts);

} // namespace tidwen
