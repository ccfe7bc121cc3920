#include "base/json.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/terminal_history.h"
#include "cli/console.h"
#include "cli/labels.h"
#include "settings/app_preferences.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tidwen {

namespace {

/// Why what the word names cannot be purged: nobody can tell all that the run moved, or there is no such run.
Message whyNotAnEntry(const std::vector<UnfinishedRun>& unfinished, const std::string& word,
                      const Texts& texts) {
    const auto root = findRunFolder({}, unfinished, word);
    if (!root) return {"cli.undo.unknown %@", {word}};
    const auto run = std::ranges::find(unfinished, *root, &UnfinishedRun::root);
    const auto why = run->known ? Message{"failure.purge.unsettled"} : run->advice();
    return {"cli.history.unfinished %@ %@", {root->string(), texts.text(why)}};
}

/// The runs that are meant, or why it is not clear which.
tl::expected<std::vector<RemovalHistoryEntry>, Message>
choose(const std::vector<RemovalHistoryEntry>& history, const std::vector<UnfinishedRun>& unfinished,
       const CommandContext& context, const Mac& mac) {
    const auto& words = context.arguments.operands;
    const bool all = context.arguments.has("--all"), expired = context.arguments.has("--expired");
    if ((words.empty() ? 0 : 1) + (all ? 1 : 0) + (expired ? 1 : 0) != 1)
        return tl::unexpected(Message{"cli.purge.usage"});
    if (all) return history;
    if (expired) {
        const AppPreferences preferences(mac.system.defaults);
        const int kept = days(quarantineRetention(preferences.quarantineRetention.get()));
        if (kept == 0) return tl::unexpected(Message{"cli.purge.keptForEver"});
        const auto now = mac.system.clock.now();
        auto old = expiredEntries(history, kept, now);
        std::erase_if(old, [&](const auto& entry) { return !hasTrustworthyDate(entry.manifest, now); });
        return old;
    }
    std::vector<RemovalHistoryEntry> chosen;
    for (const auto& word : words) {
        const auto* entry = findRun(history, word);
        if (!entry) return tl::unexpected(whyNotAnEntry(unfinished, word, context.texts));
        const bool isNew = std::none_of(chosen.begin(), chosen.end(),
                                        [&](const auto& other) { return other.root == entry->root; });
        if (isNew) chosen.push_back(*entry);
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
    for (const auto& folder : outcome.kept) {
        const bool isWhole = std::ranges::find(outcome.othersItems, folder) != outcome.othersItems.end();
        context.console.complain(
            context.text(isWhole ? "cli.purge.othersItems %@" : "history.purge.kept %@", {folder.string()}));
    }
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    // Whoever does not know the settings does not know how long the user wants to keep what he would delete.
    if (const auto problem = mac.system.defaults.problem()) return context.refuse(*problem);
    TerminalHistory history(mac);
    const bool asks = !context.arguments.yes && !context.arguments.json && context.console.canAsk();
    using enum TerminalHistory::Sizes;
    const auto& entries = history.load(asks ? measured : leftOut);
    const auto chosen = choose(entries, history.unfinishedRuns(), context, mac);
    if (!chosen) return context.refuse(chosen.error());
    if (chosen->empty()) {
        report({}, context);
        return ExitStatus::done;
    }
    for (const auto& entry : *chosen)
        if (asks)
            context.console.line({{entry.root.lastComponent()},
                                  {"  " + labels::size(entry.sizeBytes, context.texts), Paint::faint}});
    const auto question = context.text("cli.purge.question %lld", {std::to_string(chosen->size())});
    if (!agreed(context, question, "cli.purge.needsYes")) return ExitStatus::refused;
    const auto outcome = history.remove(*chosen);
    if (!outcome) return context.refuse(outcome.error());
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
