#include "cli/commands/lock_refusal.h"

namespace tidwen {

ExitStatus refuseWithoutLock(const CommandContext& context, const FileError& error) {
    if (error.fault == FileFault::busy) return context.refuse({"cli.busy"});
    return context.refuse(
        {"cli.cannotLock %@ %@", {error.path.string(), context.text(failureKey(error.fault))}});
}

} // namespace tidwen
