#include "base/json.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/commands/lock_refusal.h"
#include "cli/commands/numbered_history.h"
#include "cli/console.h"
#include "cli/labels.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/trash_lock.h"
#include "settings/app_preferences.h"

#include <nlohmann/json.hpp>

namespace tidwen {

namespace {

/// The runs that are meant, or why it is not clear which.
tl::expected<std::vector<RemovalHistoryEntry>, Message> choose(const CommandContext& context, Mac& mac) {
    const auto history = numberedHistory(mac, true);
    const auto& words = context.arguments.operands;
    const bool all = context.arguments.has("--all"), expired = context.arguments.has("--expired");
    if ((words.empty() ? 0 : 1) + (all ? 1 : 0) + (expired ? 1 : 0) != 1)
        return tl::unexpected(Message{"cli.purge.usage"});
    if (all) return history;
    if (expired) {
        const AppPreferences preferences(mac.system.defaults);
        const int kept = days(quarantineRetention(preferences.quarantineRetention.get()));
        if (kept == 0) return tl::unexpected(Message{"cli.purge.keptForEver"});
        return expiredEntries(history, kept, mac.system.clock.now());
    }
    std::vector<RemovalHistoryEntry> chosen;
    for (const auto& word : words) {
        const auto* entry = findRun(history, word);
        if (!entry) return tl::unexpected(Message{"cli.undo.unknown %@", {word}});
        chosen.push_back(*entry);
    }
    return chosen;
}

void report(const QuarantinePurge::Outcome& outcome, const CommandContext& context) {
    if (context.arguments.json) {
        nlohmann::json kept = nlohmann::json::array();
        for (const auto& folder : outcome.kept)
            kept.push_back(folder.string());
        context.console.document(writeJson({{"removedFolders", outcome.removedFolders}, {"kept", kept}}));
        return;
    }
    context.console.line(context.text("cli.purge.done %lld", {std::to_string(outcome.removedFolders)}));
    for (const auto& folder : outcome.kept)
        context.console.complain(context.text("cli.purge.kept %@", {folder.string()}));
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    const auto chosen = choose(context, mac);
    if (!chosen) return context.refuse(chosen.error());
    if (chosen->empty()) {
        report({}, context);
        return ExitStatus::done;
    }
    std::vector<Path> folders;
    for (const auto& entry : *chosen) {
        folders.push_back(entry.root);
        if (!context.arguments.yes && !context.arguments.json && context.console.canAsk())
            context.console.line({{entry.root.lastComponent()},
                                  {"  " + labels::size(entry.sizeBytes, context.texts), Paint::faint}});
    }
    if (!agreed(context, context.text("cli.purge.question %lld", {std::to_string(folders.size())})))
        return ExitStatus::refused;
    const auto lock = lockTrash(mac.system.user, mac.system.files);
    if (!lock) return refuseWithoutLock(context, lock.error());
    QuarantinePurge purge(mac.system.files, mac.system.user, mac.administrator, mac.system.log);
    const auto outcome = purge.purge(folders);
    if (!outcome)
        return context.refuse(outcome.error().describe().value_or(Message{"failure.adminCancelled"}));
    report(*outcome, context);
    return outcome->kept.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command purgeCommand() {
    return {
        .syntax = {.name = "purge",
                   .summary = "Delete past removals for good: runs of the history, the expired ones, or all",
                   .operandName = "RUN",
                   .operandHelp = "Number in history, or name of the quarantine folder",
                   .maximumOperands = anyNumber,
                   .options = {{"--expired", "", "Those older than the quarantineRetention setting"},
                               {"--all", "", "Every run"}}},
        .run = run};
}

} // namespace tidwen
