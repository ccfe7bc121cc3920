#include "base/message.h"
#include "base/path.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/terminal_history.h"
#include "cli/console.h"
#include "cli/json/output.h"
#include "cli/table.h"
#include "program/mac.h"
#include "quarantine/not_undone.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

void print(const UndoReport& report, bool isOfSingleItems, const CommandContext& context, const Mac& mac) {
    const bool isComplete = report.failures.empty();
    if (isComplete && report.totalCount == 0 && report.relaunchedJobs == 0)
        return context.console.line(
            context.text("cli.undo.alreadyBack %lld", {std::to_string(report.alreadyBack)}));
    const auto* whole = isOfSingleItems ? "cli.undo.chosenComplete" : "report.undo.complete";
    context.console.line(context.text(isComplete ? whole : "report.undo.partial"),
                         isComplete ? Style::good : Style::caution);
    for (const auto& failure : report.failures)
        context.console.line("  " + failure.text(context.texts));
    for (const auto& item : report.renamed)
        context.console.line("  " + context.text("cli.undo.renamed %@", {item.string()}));
    context.console.line(context.text("report.undo.restored %lld %lld", {std::to_string(report.restoredCount),
                                                                         std::to_string(report.totalCount)}));
    if (report.alreadyBack > 0)
        context.console.line(context.text("cli.undo.alreadyBack %lld", {std::to_string(report.alreadyBack)}));
    if (const auto lost = describe(report.lost))
        context.console.line(context.texts.text(*lost), Style::faint);
    // No job runs on a volume; it is loaded when the volume's Mac starts.
    if (report.relaunchedJobs > 0 && !mac.volume)
        context.console.line(
            context.text("report.undo.relaunched %lld", {std::to_string(report.relaunchedJobs)}));
}

constexpr const char* dryRunOption = "--dry-run";
constexpr std::string_view nothingLeft = "history.undo.nothingLeft %@";

/// All of it is back already.
ExitStatus nothingToDo(const Message& why, const std::string& document, const CommandContext& context) {
    if (context.arguments.json)
        context.console.document(document);
    else
        context.console.line(context.texts.text(why));
    return ExitStatus::done;
}

void print(const UndoPlan& plan, const CommandContext& context) {
    Table table;
    for (const auto& item : plan.items) {
        const auto note = item.problem ? context.texts.text(*item.problem)
                          : *item.destination != item.oldPlace
                              ? context.text("cli.undo.beside %@", {item.destination->string()})
                              : std::string();
        table.add({{context.text(item.problem ? "cli.undo.stays" : "cli.undo.goesBack"),
                    item.problem ? Style::caution : Style::good},
                   {item.requiresRoot ? context.text("cli.plan.administrator") : "", Style::caution},
                   {item.oldPlace.string()},
                   {note, Style::faint}});
    }
    for (const auto& job : plan.jobs)
        table.add({{context.text("cli.step.bootstrap"), Style::good}, {}, {job}});
    table.print(context.console);
    if (plan.alreadyBack > 0)
        context.console.line(context.text("cli.undo.alreadyBack %lld", {std::to_string(plan.alreadyBack)}));
}

ExitStatus showPlan(TerminalHistory& history, const Path& root, const ItemChoice& items,
                    const CommandContext& context) {
    const auto plan = history.planUndo(root, items);
    if (!plan && plan.error().key == nothingLeft)
        return nothingToDo(plan.error(), json::document(root, UndoPlan(), context.texts), context);
    if (!plan) return context.refuse(plan.error());
    if (context.arguments.json)
        context.console.document(json::document(root, *plan, context.texts));
    else
        print(*plan, context);
    const bool isWhole =
        std::ranges::none_of(plan->items, [](const PlannedReturn& item) { return item.problem.has_value(); });
    return isWhole ? ExitStatus::done : ExitStatus::someFailed;
}

/// The items that the words mean; all without words.
tl::expected<ItemChoice, Message> choose(const TerminalHistory& history, const Path& root,
                                         const std::vector<std::string>& words) {
    if (words.empty()) return ItemChoice();
    const auto record = history.record(root);
    if (!record) return tl::unexpected(record.error());
    return findItems(*record, words);
}

ExitStatus runUndo(const CommandContext& context, Mac& mac) {
    const auto& words = context.arguments.operands;
    TerminalHistory history(context, mac);
    history.load(TerminalHistory::Sizes::leftOut);
    const auto root = history.find(words.front());
    if (!root) return refuseUnknownRun(context, history, root.error());
    const auto items = choose(history, *root, {words.begin() + 1, words.end()});
    if (!items) return context.refuse(items.error());
    if (context.arguments.has(dryRunOption)) return showPlan(history, *root, *items, context);
    const auto report = history.undo(*root, *items);
    if (!report && report.error().key == nothingLeft)
        return nothingToDo(report.error(), json::document(UndoReport(), context.texts), context);
    if (!report) return context.refuse(report.error());
    if (context.arguments.json)
        context.console.document(json::document(*report, context.texts));
    else
        print(*report, !items->empty(), context, mac);
    return report->failures.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command undoCommand() {
    return {.syntax = {.name = "undo",
                       .summary = "cli.help.undo",
                       .operandName = "RUN",
                       .operandForm = "RUN [ITEM...]",
                       .operandHelp = "cli.help.undo.operand",
                       .minimumOperands = 1,
                       .maximumOperands = anyNumber,
                       .options = {{dryRunOption, "", "cli.help.undo.dryRun"}}},
            .run = runUndo};
}

} // namespace tidwen
