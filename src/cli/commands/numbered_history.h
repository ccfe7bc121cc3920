#pragma once

#include "cli/command.h"
#include "quarantine/history.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// Past runs in the order in which `history` numbers them from 1: newest first, and the same every time.
std::vector<RemovalHistoryEntry> numberedHistory(const Mac& mac, bool includeSizes);

/// The entry that a word means: its number, or the name or path of its quarantine folder.
const RemovalHistoryEntry* findRun(const std::vector<RemovalHistoryEntry>& history, const std::string& word);

/// How to put the run in `root` back, as a command line; nothing when there is nothing to put back.
std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac);

/// Says that runs were cut off and wait for `recover`, when that is so; their number.
int mentionInterruptedRuns(const CommandContext& context, const Mac& mac);

} // namespace tidwen
