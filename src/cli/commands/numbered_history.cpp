#include "cli/commands/numbered_history.h"

#include "base/message.h"
#include "base/path.h"
#include "cli/console.h"
#include "platform/file_system.h"
#include "program/mac.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/unfinished_run.h"

#include <algorithm>

namespace tidwen {

bool missesItems(const Manifest& run) {
    return std::ranges::any_of(run.entries, &ManifestEntry::isMissing);
}

std::optional<std::string> undoCommandLine(const Path& root, const CommandContext& context, const Mac& mac) {
    const auto history = loadHistory(mac.system.user, mac.system.files, false);
    const auto found = std::ranges::find_if(history, [&](const auto& entry) { return entry.root == root; });
    if (found == history.end()) {
        const auto run = readUnfinishedRun(root, mac.system.files);
        const auto isFound = [](const ManifestEntry& entry) { return !entry.isMissing; };
        if (!run || !run->known || std::ranges::none_of(run->known->entries, isFound)) return std::nullopt;
    } else if (!found->canBeUndone(!mac.volume))
        return std::nullopt;
    // By name, because its number changes with the next run.
    return context.commandLine({"undo", root.lastComponent()});
}

ExitStatus refuseUnknownRun(const CommandContext& context, const TerminalHistory& history,
                            const Message& reason) {
    if (const auto& unreadable = history.unreadable()) return context.refuse(*unreadable);
    mentionInterruptedRuns(context, history);
    return context.refuse(reason);
}

void mentionInterruptedRuns(const CommandContext& context, const TerminalHistory& history) {
    if (const auto& unreadable = history.unreadable()) context.error(*unreadable);
    if (history.isAnotherAtWork()) context.error({"failure.trashBusy"});
    const auto count = std::ranges::count_if(history.unfinishedRuns(), [](const UnfinishedRun& run) {
        // `recover` can do nothing about the others.
        return run.problem == UnfinishedRun::Problem::interrupted
               || run.problem == UnfinishedRun::Problem::unsettled;
    });
    if (count > 0)
        context.advise({"cli.interrupted %lld %@", {std::to_string(count)}},
                       context.commandLine({"recover"}));
}

} // namespace tidwen
