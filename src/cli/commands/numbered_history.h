#pragma once

#include "cli/command.h"
#include "quarantine/history.h"
#include "quarantine/unfinished_run.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The entry that a word means: its number, or the name or path of its quarantine folder.
const RemovalHistoryEntry* findRun(const std::vector<RemovalHistoryEntry>& history, const std::string& word);

/// The folder of the run that a word means, also of one that was cut off and so has no number.
std::optional<Path> findRunFolder(const std::vector<RemovalHistoryEntry>& history,
                                  const std::vector<UnfinishedRun>& unfinished, const std::string& word);

/// How to put the run in `root` back, as a command line; nothing when there is nothing to put back.
std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac);

/// Says what the history cannot show: runs that wait for `recover`, or all of them.
void mentionInterruptedRuns(const CommandContext& context, const Mac& mac);

} // namespace tidwen
