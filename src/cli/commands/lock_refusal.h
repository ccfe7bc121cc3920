#pragma once

#include "cli/command.h"
#include "platform/file_system.h"

namespace tidwen {

/// Refuses because the Trash could not be locked: another process of this program is at work, or the Trash
/// cannot be written.
ExitStatus refuseWithoutLock(const CommandContext& context, const FileError& error);

} // namespace tidwen
