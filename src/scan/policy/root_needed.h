#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <cstdint>

namespace tidwen {

/// Whether moving the item away takes an administrator's rights: its parent is not writable for the user, or
/// is sticky and neither it nor the item is the user's, or the item is a folder of another's, or it is
/// immutable. Also when that cannot be found out.
bool moveNeedsRoot(const FileSystem& files, const UserEnvironment& user, const Path& item);

/// The same from known attributes of the item and of its folder.
bool moveNeedsRoot(const FileInfo& item, const FileInfo& parent, std::uint32_t userID);

} // namespace tidwen
