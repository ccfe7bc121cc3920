#pragma once

#include "base/message.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <memory>
#include <optional>
#include <tl/expected.hpp>

namespace tidwen {

/// Only one Tidwen at a time may remove, undo or purge in a user's Trash. The lock ends with this object or
/// its process. Creates a missing Trash. The error says why nothing was begun: another Tidwen is at work
/// there, or the Trash is unusable.
tl::expected<std::unique_ptr<FolderLock>, Message> lockTrash(const UserEnvironment& user, FileSystem& files);

/// Why the Trash is unusable: macOS withholds it, it is a link, not a folder, or closed to this account.
/// nullopt when it is usable, missing, or when only an attempt could tell. Changes nothing.
std::optional<Message> whyTrashIsUnusable(const UserEnvironment& user, const FileSystem& files);

/// Why a removal, undo or purge was not begun, by the file that it needed.
Message describeNotBegun(const FileError& error);

} // namespace tidwen
