#pragma once

#include "base/message.h"
#include "platform/file_system.h"

#include <optional>
#include <string>

namespace tidwen {

/// Deletes every row of `client`, or only those of one service ("kTCCServiceCamera"), from table "access" of
/// a privacy database on a volume. The file is edited in memory and replaced as a whole, its mode and owner
/// kept; it is left alone when no row is there. A file that does not exist has nothing to delete. Gives the
/// reason when it could not be done; then it is unchanged.
std::optional<Message> deletePermissionRows(FileSystem& files, const Path& database,
                                            const std::string& client,
                                            const std::optional<std::string>& service = std::nullopt);

} // namespace tidwen
