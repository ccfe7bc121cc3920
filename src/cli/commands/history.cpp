#include "cli/command.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/terminal_history.h"
#include "cli/console.h"
#include "cli/json/output.h"
#include "cli/labels.h"
#include "cli/table.h"

namespace tidwen {

namespace {

std::string state(const RemovalHistoryEntry& entry, const CommandContext& context) {
    const auto ofAll = [&](const char* key, int count) {
        return context.text(key, {std::to_string(count), std::to_string(entry.totalMoves)});
    };
    const auto items = [&] {
        switch (entry.items()) {
        case RemovalHistoryEntry::Items::none:
            return context.text("cli.history.nothing");
        case RemovalHistoryEntry::Items::inQuarantine:
            return ofAll("cli.history.pending %lld %lld", entry.pendingMoves);
        case RemovalHistoryEntry::Items::missing:
            return ofAll("cli.history.missing %lld %lld", entry.missingMoves);
        case RemovalHistoryEntry::Items::putBack:
            break;
        }
        return context.text("history.row.restored");
    }();
    return entry.manifest.recoveredAt ? items + ", " + context.text("history.row.recovered") : items;
}

void print(const std::vector<RemovalHistoryEntry>& history, const CommandContext& context) {
    using enum Table::Align;
    Table table({right, left, left, right, right, left});
    std::int64_t bytes = 0;
    for (std::size_t i = 0; i < history.size(); ++i) {
        const auto& entry = history[i];
        bytes += entry.sizeBytes.value_or(0);
        table.add({{std::to_string(i + 1)},
                   {displayDate(entry.manifest.createdAt), Paint::faint},
                   {labels::names(entry.manifest.apps), Paint::strong},
                   {context.text("history.row.items %lld", {std::to_string(entry.manifest.entries.size())})},
                   {labels::size(entry.sizeBytes, context.texts)},
                   {state(entry, context)}});
    }
    table.print(context.console);
    context.console.line(context.text("history.total %lld %@",
                                      {std::to_string(history.size()), labels::size(bytes, context.texts)}));
}

void print(const std::vector<UnfinishedRun>& runs, const CommandContext& context) {
    for (const auto& run : runs) {
        context.console.line(context.text("cli.history.unfinished %@ %@",
                                          {run.root.lastComponent(), context.texts.text(run.advice())}),
                             Paint::caution);
        for (const auto& item : run.unsettled)
            context.console.line("  " + item);
    }
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    TerminalHistory runs(mac);
    const auto& history = runs.load(TerminalHistory::Sizes::measured);
    const auto& unfinished = runs.unfinishedRuns();
    const bool isAllKnown = !runs.unreadable() && !runs.isAnotherAtWork() && runs.leftOut() == 0;
    if (context.arguments.json) {
        context.console.document(json::document(history, unfinished, context.texts));
    } else {
        if (!history.empty())
            print(history, context);
        else if (unfinished.empty() && isAllKnown)
            context.console.line(context.text("history.empty.title"));
        print(unfinished, context);
    }
    mentionInterruptedRuns(context, runs);
    if (runs.leftOut() > 0)
        context.console.complain(context.text("cli.history.leftOut %lld", {std::to_string(runs.leftOut())}));
    return isAllKnown && unfinished.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command historyCommand() {
    return {.syntax = {.name = "history", .summary = "List past removals, newest first"}, .run = run};
}

} // namespace tidwen
