#include "cli/commands/lock_refusal.h"

#include "quarantine/trash_lock.h"

namespace tidwen {

ExitStatus refuseWithoutLock(const CommandContext& context, const FileError& error) {
    return context.refuse(describeNotBegun(error, context.texts));
}

} // namespace tidwen
