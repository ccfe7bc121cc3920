#pragma once

#include "cli/command.h"
#include "cli/commands/terminal_history.h"

#include <optional>
#include <string>

namespace tidwen {

/// How to put the run in `root` back, as a command line; nothing when there is nothing to put back.
std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac);

/// Says what a loaded history cannot show: runs that wait for `recover`, those of another process that is at
/// work, or all of them.
void mentionInterruptedRuns(const CommandContext& context, const TerminalHistory& history);

/// Refuses a word that means no run, with the reason; with a Trash that cannot be read nobody knows whether
/// it means one, and that is the reason.
ExitStatus refuseUnknownRun(const CommandContext& context, const TerminalHistory& history,
                            const Message& reason);

} // namespace tidwen
