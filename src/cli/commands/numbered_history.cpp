#include "cli/commands/numbered_history.h"

#include "cli/console.h"
#include "quarantine/quarantine_layout.h"

#include <algorithm>

namespace tidwen {

std::vector<RemovalHistoryEntry> numberedHistory(const Mac& mac, bool includeSizes) {
    auto history = loadHistory(mac.system.user, mac.system.files, includeSizes);
    std::stable_sort(history.begin(), history.end(), [](const auto& a, const auto& b) {
        if (a.manifest.createdAt != b.manifest.createdAt) return a.manifest.createdAt > b.manifest.createdAt;
        return a.root > b.root;
    });
    return history;
}

const RemovalHistoryEntry* findRun(const std::vector<RemovalHistoryEntry>& history, const std::string& word) {
    for (std::size_t i = 0; i < history.size(); ++i)
        if (word == std::to_string(i + 1) || word == history[i].root.lastComponent()
            || Path(word) == history[i].root)
            return &history[i];
    return nullptr;
}

std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac) {
    const auto history = numberedHistory(mac, false);
    const auto found =
        std::find_if(history.begin(), history.end(), [&](const auto& entry) { return entry.root == root; });
    if (found == history.end() || found->pendingMoves == 0) return std::nullopt;
    return context.commandLine("undo " + std::to_string(found - history.begin() + 1));
}

int mentionInterruptedRuns(const CommandContext& context, const Mac& mac) {
    const auto& files = mac.system.files;
    const auto folders = listQuarantineFolders(mac.system.user, files);
    if (!folders) return 0;
    const auto count = std::count_if(folders->begin(), folders->end(), [&](const Path& folder) {
        return files.exists(folder / journalFileName) && !files.exists(folder / manifestFileName);
    });
    if (count > 0)
        context.console.complain(
            context.text("cli.interrupted %lld %@", {std::to_string(count), context.commandLine("recover")}));
    return static_cast<int>(count);
}

} // namespace tidwen
