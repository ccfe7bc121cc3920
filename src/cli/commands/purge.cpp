#include "base/message.h"
#include "base/path.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/terminal_history.h"
#include "cli/console.h"
#include "cli/json/services.h"
#include "cli/labels.h"
#include "platform/file_system.h"
#include "program/mac.h"
#include "quarantine/history.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/unfinished_run.h"
#include "settings/app_preferences.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

/// The run that a word means, or why it cannot be deleted.
tl::expected<RemovalHistoryEntry, Message> findEntry(const std::vector<RemovalHistoryEntry>& history,
                                                     const TerminalHistory& runs, const std::string& word,
                                                     const CommandContext& context) {
    const auto root = runs.find(word);
    if (!root) return tl::unexpected(root.error());
    for (const auto& run : runs.unfinishedRuns())
        if (*root == run.root)
            return tl::unexpected(
                Message{"cli.purge.spared %@ %@", {root->lastComponent(), context.texts.text(run.advice())}});
    const auto entry = std::ranges::find_if(history, [&](const auto& each) { return each.root == *root; });
    if (entry == history.end())
        return tl::unexpected(Message{"cli.history.leftOut %lld", {std::to_string(runs.leftOut())}});
    return *entry;
}

/// The selected runs, or why the selection is unclear.
tl::expected<std::vector<RemovalHistoryEntry>, Message>
choose(const std::vector<RemovalHistoryEntry>& history, const TerminalHistory& runs,
       const CommandContext& context, const Mac& mac) {
    const auto& words = context.arguments.operands;
    const bool all = context.arguments.has("--all"), expired = context.arguments.has("--expired");
    if (all) return history;
    if (expired) {
        const AppPreferences preferences(mac.system.defaults);
        const int kept = days(quarantineRetention(preferences.quarantineRetention.get()));
        if (kept == 0) {
            if (!context.arguments.json) context.console.line(context.text("cli.purge.keptForEver"));
            return std::vector<RemovalHistoryEntry>();
        }
        const auto now = mac.system.clock.now();
        auto old = expiredEntries(history, kept, now);
        std::erase_if(old, [&](const auto& entry) { return !hasTrustworthyDate(entry.manifest, now); });
        return old;
    }
    std::vector<RemovalHistoryEntry> chosen;
    for (const auto& word : words) {
        const auto entry = findEntry(history, runs, word, context);
        if (!entry) return tl::unexpected(entry.error());
        const bool isNew = std::none_of(chosen.begin(), chosen.end(),
                                        [&](const auto& other) { return other.root == entry->root; });
        if (isNew) chosen.push_back(*entry);
    }
    return chosen;
}

/// What `--all` does not delete: runs that moved unknown items, or that were not read.
struct Spared {
    std::vector<UnfinishedRun> runs = {};
    std::uint64_t leftOut = 0;

    bool isNothing() const { return runs.empty() && leftOut == 0; }
};

void report(const std::vector<RemovalHistoryEntry>& chosen, const QuarantinePurge::Outcome& outcome,
            const Spared& spared, const CommandContext& context) {
    for (const auto& run : spared.runs)
        context.error({"cli.purge.spared %@ %@", {run.root.string(), context.texts.text(run.advice())}});
    if (spared.leftOut > 0) context.error({"cli.history.leftOut %lld", {std::to_string(spared.leftOut)}});
    for (const auto& [folder, failure] : outcome.cutOffUndos)
        if (const auto reason = failure.describe())
            context.error({"cli.purge.spared %@ %@", {folder.string(), context.texts.text(*reason)}});
    if (context.arguments.json) return context.console.document(json::document(outcome, spared.runs));
    const bool isNothing = outcome.removedFolders == 0 && outcome.kept.empty() && spared.isNothing();
    context.console.line(isNothing
                             ? context.text("cli.purge.nothing")
                             : context.text("cli.purge.done %lld", {std::to_string(outcome.removedFolders)}));
    const auto isAmong = [](const std::vector<Path>& folders, const Path& folder) {
        return std::ranges::find(folders, folder) != folders.end();
    };
    for (const auto& run : chosen)
        if (!isAmong(outcome.kept, run.root)) context.console.line("  " + run.root.lastComponent());
    for (const auto& folder : outcome.kept) {
        if (outcome.cutOffUndos.contains(folder)) continue;
        context.console.error(context.text(isAmong(outcome.othersItems, folder) ? "cli.purge.othersItems %@"
                                           : isAmong(outcome.notBegun, folder)  ? "cli.purge.stopped %@"
                                                                                : "history.purge.kept %@",
                                           {folder.string()}));
    }
}

ExitStatus runPurge(const CommandContext& context, Mac& mac) {
    const auto& arguments = context.arguments;
    const int ways = (arguments.operands.empty() ? 0 : 1) + (arguments.has("--all") ? 1 : 0)
                     + (arguments.has("--expired") ? 1 : 0);
    if (ways != 1) return context.misuse({"cli.purge.usage"});
    TerminalHistory history(context, mac);
    if (const auto problem = history.whyNotRemove()) return context.refuse(*problem);
    const bool asks = !context.arguments.yes && !context.arguments.json && context.console.canAsk();
    using enum TerminalHistory::Sizes;
    const auto& runs = history.load(asks ? measured : leftOut);
    if (const auto& unreadable = history.unreadable()) return context.refuse(*unreadable);
    if (history.isAnotherAtWork()) return context.refuse({"failure.trashBusy"});
    const auto chosen = choose(runs, history, context, mac);
    if (!chosen) return context.refuse(chosen.error());
    const auto spared =
        context.arguments.has("--all") ? Spared{history.unfinishedRuns(), history.leftOut()} : Spared{};
    using enum QuarantinePurge::CutOffUndo;
    const auto cutOffUndo = context.arguments.operands.empty() ? keep : refuse;
    if (chosen->empty()) {
        // A run interrupted before its first move leaves a folder too.
        if (context.arguments.has("--all"))
            if (const auto tidied = history.remove({}, cutOffUndo); !tidied)
                return context.refuse(tidied.error());
        report({}, {}, spared, context);
        return spared.isNothing() ? ExitStatus::done : ExitStatus::someFailed;
    }
    for (const auto& entry : *chosen)
        if (asks)
            context.console.line(
                {{entry.root.lastComponent()}, {"  " + labels::size(entry, context.texts), Style::faint}});
    const auto question = context.text("cli.purge.question %lld", {std::to_string(chosen->size())});
    if (!agreed(context, question, "cli.purge.needsYes")) return ExitStatus::refused;
    const auto outcome = history.remove(*chosen, cutOffUndo);
    if (!outcome) return context.refuse(outcome.error());
    report(*chosen, *outcome, spared, context);
    return outcome->kept.empty() && spared.isNothing() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command purgeCommand() {
    return {.syntax = {.name = "purge",
                       .summary = "cli.help.purge",
                       .operandName = "RUN",
                       .operandHelp = "cli.help.operand.run",
                       .maximumOperands = anyNumber,
                       .options = {{"--expired", "", "cli.help.purge.expired"},
                                   {"--all", "", "cli.help.purge.all"}}},
            .run = runPurge};
}

} // namespace tidwen
