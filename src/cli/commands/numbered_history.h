#pragma once

#include "base/message.h"
#include "base/path.h"
#include "cli/command.h"
#include "cli/commands/terminal_history.h"
#include "program/mac.h"
#include "quarantine/manifest.h"

#include <optional>
#include <string>

namespace tidwen {

/// The command line that undoes the run in `root`; absent if there is nothing to put back.
std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac);

/// Whether recovery found items of the run neither in quarantine nor in their old places.
bool missesItems(const Manifest& run);

/// Reports what a loaded history cannot show: runs that wait for `recover`, those of another running process,
/// or all of them.
void mentionInterruptedRuns(const CommandContext& context, const TerminalHistory& history);

/// Refuses a word that matches no run, with the reason; if the Trash is unreadable, that is the reason.
ExitStatus refuseUnknownRun(const CommandContext& context, const TerminalHistory& history,
                            const Message& reason);

} // namespace tidwen
