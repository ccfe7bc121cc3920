#pragma once

#include "base/message.h"
#include "base/path.h"
#include "platform/file_system.h"

#include <optional>
#include <string>

namespace tidwen {

/// Deletes every row of `client`, or only those of one service ("kTCCServiceCamera"), from table "access" of
/// a privacy database on a volume. Edits the file in memory and replaces it as a whole, keeping mode and
/// owner; writes nothing if no row matches. A missing file is a success. Returns the reason on failure; the
/// file is unchanged then.
std::optional<Message> deletePermissionRows(FileSystem& files, const Path& database,
                                            const std::string& client,
                                            const std::optional<std::string>& service = std::nullopt);

} // namespace tidwen
