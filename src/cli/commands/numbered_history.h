#pragma once

#include "cli/command.h"
#include "quarantine/history.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The entry that a word means: its number, or the name or path of its quarantine folder.
const RemovalHistoryEntry* findRun(const std::vector<RemovalHistoryEntry>& history, const std::string& word);

/// How to put the run in `root` back, as a command line; nothing when there is nothing to put back.
std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac);

/// The quarantine folders of runs that were cut off.
std::vector<Path> interruptedRuns(const Mac& mac);

/// Says what the history cannot show: runs that wait for `recover`, or all of them.
void mentionInterruptedRuns(const CommandContext& context, const Mac& mac);

} // namespace tidwen
