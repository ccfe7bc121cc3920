#include "cli/commands/numbered_history.h"

#include "base/path_key.h"
#include "base/text.h"
#include "cli/console.h"
#include "quarantine/quarantine_layout.h"

#include <algorithm>

namespace tidwen {

namespace {

/// However the disk spells the folder's name.
bool isCalled(const Path& root, const std::string& word) {
    return fileNameKey(word) == fileNameKey(root.lastComponent()) || pathKey(Path(word)) == pathKey(root);
}

} // namespace

const RemovalHistoryEntry* findRun(const std::vector<RemovalHistoryEntry>& history, const std::string& word) {
    for (std::size_t i = 0; i < history.size(); ++i)
        if (word == std::to_string(i + 1) || isCalled(history[i].root, word)) return &history[i];
    return nullptr;
}

std::optional<Path> findRunFolder(const std::vector<RemovalHistoryEntry>& history,
                                  const std::vector<UnfinishedRun>& unfinished, const std::string& word) {
    if (const auto* entry = findRun(history, word)) return entry->root;
    for (const auto& run : unfinished)
        if (isCalled(run.root, word)) return run.root;
    return std::nullopt;
}

std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac) {
    const auto history = loadHistory(mac.system.user, mac.system.files, false);
    const auto found = std::find_if(history.begin(), history.end(),
                                    [&](const auto& entry) { return pathKey(entry.root) == pathKey(root); });
    if (found == history.end()) {
        const auto run = readUnfinishedRun(root, mac.system.files);
        if (!run || !run->known || run->known->entries.empty()) return std::nullopt;
        return context.commandLine({"undo", root.lastComponent()});
    }
    const bool isLeft = mac.volume ? found->pendingMoves > 0 : found->canBeUndone();
    if (!isLeft) return std::nullopt;
    return context.commandLine({"undo", std::to_string(found - history.begin() + 1)});
}

void mentionInterruptedRuns(const CommandContext& context, const Mac& mac) {
    if (const auto folders = listQuarantineFolders(mac.system.user, mac.system.files); !folders)
        context.console.complain(
            context.text("cli.history.unreadable %@ %@",
                         {folders.error().path.string(), context.text(failureKey(folders.error().fault))}));
    const auto runs = loadPastRuns(mac.system.user, mac.system.files, false).unfinished;
    const auto count = std::ranges::count_if(runs, [](const UnfinishedRun& run) {
        // Nothing that `recover` could do anything about is left of the others.
        return run.problem == UnfinishedRun::Problem::interrupted
               || run.problem == UnfinishedRun::Problem::unsettled;
    });
    if (count > 0)
        context.console.complain(context.text("cli.interrupted %lld %@",
                                              {std::to_string(count), context.commandLine({"recover"})}));
}

} // namespace tidwen
