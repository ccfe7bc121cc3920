#include "quarantine/history.h"
#include "base/byte_sum.h"
#include "base/timestamp.h"
#include "cli/command.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/terminal_history.h"
#include "cli/console.h"
#include "cli/json/output.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "platform/file_system.h"
#include "program/mac.h"
#include "quarantine/manifest_subject.h"
#include "quarantine/run_items.h"
#include "quarantine/unfinished_run.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

namespace {

std::string state(const RemovalHistoryEntry& entry, const CommandContext& context) {
    const auto ofAll = [&](const char* key, int count) {
        return context.text(key, {std::to_string(count), std::to_string(entry.totalMoves)});
    };
    const auto items = [&] {
        switch (entry.items()) {
        case RemovalHistoryEntry::Items::none:
            return context.text(entry.manifest.recoveredAt ? "cli.history.nothing" : "cli.history.allStayed");
        case RemovalHistoryEntry::Items::inQuarantine: {
            auto pending = ofAll("cli.history.pending %lld %lld", entry.pendingMoves);
            if (entry.missingMoves == 0) return pending;
            return pending + ", " + ofAll("cli.history.missing %lld %lld", entry.missingMoves);
        }
        case RemovalHistoryEntry::Items::missing:
            return ofAll("cli.history.missing %lld %lld", entry.missingMoves);
        case RemovalHistoryEntry::Items::putBack:
            break;
        }
        return context.text("history.row.restored");
    }();
    const auto known = entry.isPartlyPurged ? items + ", " + context.text("history.row.partlyPurged") : items;
    return entry.manifest.recoveredAt ? known + ", " + context.text("history.row.recovered") : known;
}

/// Items put back are no longer in quarantine, and the size of the run's documents is negligible.
ByteSum sizeInQuarantine(const RemovalHistoryEntry& entry) {
    ByteSum size;
    if (entry.items() != RemovalHistoryEntry::Items::putBack) size.add(entry.sizeBytes, entry.isSizePartial);
    return size;
}

void print(const std::vector<RemovalHistoryEntry>& history, const CommandContext& context) {
    using enum Table::Align;
    Table table({right, left, left, right, right, left});
    ByteSum sum;
    for (std::size_t i = 0; i < history.size(); ++i) {
        const auto& entry = history[i];
        const auto size = sizeInQuarantine(entry);
        sum.add(size);
        table.add({{std::to_string(i + 1)},
                   {displayDate(entry.manifest.createdAt), Style::faint},
                   {subjectText(entry.manifest, context.texts), Style::strong},
                   {context.text("history.row.items %lld", {std::to_string(entry.totalMoves)})},
                   {size.isKnown ? sizeText(size, context.texts) : ""},
                   {state(entry, context)}});
    }
    table.print(context.console);
    const auto count = std::to_string(history.size());
    if (!sum.isKnown) return context.console.line(context.text("history.count %lld", {count}));
    context.console.line(context.text("history.total %lld %@", {count, sizeText(sum, context.texts)}));
}

void print(const std::vector<UnfinishedRun>& runs, const CommandContext& context) {
    for (const auto& run : runs) {
        context.console.line(context.text("cli.history.unfinished %@ %@",
                                          {run.root.lastComponent(), context.texts.text(run.advice())}),
                             Style::caution);
        for (const auto& item : run.unsettled)
            context.console.line("  " + item);
    }
}

void print(const std::vector<RunItem>& items, const CommandContext& context, const FileSystem& files) {
    Table table;
    for (const auto& item : items)
        table.add({{context.text(mayBeBeside(item, files) ? "cli.item.putBackBeside"
                                                          : "cli.item." + std::string(name(item.place))),
                    item.place == ItemPlace::missing ? Style::caution : Style::faint},
                   {item.entry.source}});
    table.print(context.console, 2);
}

/// Prints one run with the state of each of its items.
ExitStatus show(const TerminalHistory& runs, const std::string& word, const CommandContext& context,
                const FileSystem& files) {
    const auto root = runs.find(word);
    if (!root) return refuseUnknownRun(context, runs, root.error());
    const auto& unfinished = runs.unfinishedRuns();
    const auto run = std::ranges::find(unfinished, *root, &UnfinishedRun::root);
    if (run != unfinished.end()) {
        const auto items = run->known ? runItems(*run->known, files) : std::vector<RunItem>();
        if (context.arguments.json) {
            context.console.document(json::document(*run, items, context.texts));
        } else {
            print(std::vector{*run}, context);
            print(items, context, files);
        }
        return ExitStatus::someFailed;
    }
    const auto& history = runs.entries();
    const auto entry = std::ranges::find(history, *root, &RemovalHistoryEntry::root);
    if (entry == history.end())
        return context.refuse({"cli.history.leftOut %lld", {std::to_string(runs.leftOut())}});
    const auto items = runItems(entry->manifest, files, entry->takenAgain);
    const auto number = runs.leftOut() > 0
                            ? std::nullopt
                            : std::optional(static_cast<std::size_t>(entry - history.begin()) + 1);
    const auto status = entry->missingMoves > 0 ? ExitStatus::someFailed : ExitStatus::done;
    if (context.arguments.json) {
        context.console.document(json::document(*entry, number, items));
        return status;
    }
    context.console.line(
        {{subjectText(entry->manifest, context.texts), Style::strong},
         {"  " + displayDate(entry->manifest.createdAt), Style::faint},
         {"  " + labels::countAndSize(items.size(), sizeInQuarantine(*entry), context.texts)},
         {"  " + state(*entry, context)}});
    context.console.line(entry->root.string(), Style::faint);
    print(items, context, files);
    return status;
}

ExitStatus runHistory(const CommandContext& context, Mac& mac) {
    TerminalHistory runs(context, mac);
    const auto& history = runs.load(TerminalHistory::Sizes::measured);
    if (!context.arguments.operands.empty())
        return show(runs, context.arguments.operands.front(), context, mac.system.files);
    const auto& unfinished = runs.unfinishedRuns();
    const bool isAllKnown = !runs.unreadable() && !runs.isAnotherAtWork() && runs.leftOut() == 0;
    if (context.arguments.json) {
        context.console.document(json::document(history, runs.leftOut() == 0, unfinished, context.texts));
    } else {
        if (!history.empty())
            print(history, context);
        else if (unfinished.empty() && isAllKnown)
            context.console.line(context.text("history.empty.title"));
        print(unfinished, context);
    }
    mentionInterruptedRuns(context, runs);
    if (runs.leftOut() > 0) context.error({"cli.history.leftOut %lld", {std::to_string(runs.leftOut())}});
    const bool isNothingLost = std::ranges::none_of(
        history, [](const RemovalHistoryEntry& entry) { return entry.missingMoves > 0; });
    return isAllKnown && unfinished.empty() && isNothingLost ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command historyCommand() {
    return {.syntax = {.name = "history",
                       .summary = "cli.help.history",
                       .operandName = "RUN",
                       .operandHelp = "cli.help.operand.run",
                       .maximumOperands = 1},
            .run = runHistory};
}

} // namespace tidwen
