#include "cli/commands/numbered_history.h"

#include "cli/console.h"
#include "quarantine/quarantine_layout.h"

#include <algorithm>

namespace tidwen {

const RemovalHistoryEntry* findRun(const std::vector<RemovalHistoryEntry>& history, const std::string& word) {
    for (std::size_t i = 0; i < history.size(); ++i)
        if (word == std::to_string(i + 1) || word == history[i].root.lastComponent()
            || Path(word) == history[i].root)
            return &history[i];
    return nullptr;
}

std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac) {
    const auto history = loadHistory(mac.system.user, mac.system.files, false);
    const auto found =
        std::find_if(history.begin(), history.end(), [&](const auto& entry) { return entry.root == root; });
    if (found == history.end() || found->pendingMoves == 0) return std::nullopt;
    return context.commandLine({"undo", std::to_string(found - history.begin() + 1)});
}

std::vector<Path> interruptedRuns(const Mac& mac) {
    const auto& files = mac.system.files;
    auto folders = listQuarantineFolders(mac.system.user, files).value_or(std::vector<Path>());
    std::erase_if(folders, [&](const Path& folder) {
        return !files.exists(folder / journalFileName) || files.exists(folder / manifestFileName);
    });
    return folders;
}

void mentionInterruptedRuns(const CommandContext& context, const Mac& mac) {
    if (const auto folders = listQuarantineFolders(mac.system.user, mac.system.files); !folders)
        context.console.complain(
            context.text("cli.history.unreadable %@ %@",
                         {folders.error().path.string(), context.text(failureKey(folders.error().fault))}));
    const auto count = interruptedRuns(mac).size();
    if (count > 0)
        context.console.complain(context.text("cli.interrupted %lld %@",
                                              {std::to_string(count), context.commandLine({"recover"})}));
}

} // namespace tidwen
