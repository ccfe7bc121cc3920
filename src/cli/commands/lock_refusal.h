#pragma once

#include "cli/command.h"
#include "platform/file_system.h"

namespace tidwen {

/// Refuses because the Trash could not be locked: another process of this program is running, or the Trash is
/// unusable.
ExitStatus refuseWithoutLock(const CommandContext& context, const FileError& error);

} // namespace tidwen
